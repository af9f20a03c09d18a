// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The processes that read foreign sound files. Every file is decoded, and its tags are read, by a process of
// its own, confined so that it reaches nothing but that file and the memory that its sound goes to; they are
// forked from one that has everything loaded. A file that crashes, stalls or exhausts its process affects no
// other file.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "sound/DecodeOptions.h"
#include "sound/DecodedSound.h"
#include "sound/Measurement.h"

namespace sorakaze::sound {

/// A file that could not be read to its end because its decoder failed.
struct DecoderFailure {
    std::filesystem::path file;
    std::string why;  ///< one line for the user
};

class Decoders {
  public:
    enum class Pace {
        Device,  ///< the frames are consumed at the speed of playback
        Fast,    ///< as fast as they come: the decoder uses more than one core where it can
    };

    /// `program` is sorakaze-decoder. It is started at once, on a thread of this object's own, and again
    /// whenever it has ended.
    /// A decoder may take `stallTimeout` for an answer or for its next frames.
    explicit Decoders(std::filesystem::path program, std::chrono::milliseconds stallTimeout = kStallTimeout);
    /// Ends the decoders of all sounds.
    ~Decoders();
    Decoders(const Decoders&) = delete;
    Decoders& operator=(const Decoders&) = delete;

    /// The decoders that all engines of this process share, with the sorakaze-decoder beside the running
    /// program.
    static std::shared_ptr<Decoders> Shared();
    /// For a sorakaze-decoder elsewhere. Before the first call of Shared.
    static void SetSharedProgram(std::filesystem::path program);

    /// Empty when the file can't be read or holds no sound that can be decoded; the first frames are there
    /// when this returns. Blocks for file I/O and for the decoder, some seconds at most. Any thread but the
    /// mixing one; never throws for bad files.
    /// The first `measured` frames, if any and at most kMostMeasuredInRing, are decoded at once and measured:
    /// see DecodedSound::AwaitMeasurement.
    /// With `why`, that is given the reason where the result is empty, and TakeFailures isn't told.
    std::unique_ptr<DecodedSound> Open(const std::filesystem::path& file, Pace pace,
                                       const DecodeOptions& options = {}, Frames measured = {},
                                       std::string* why = nullptr);
    /// More than a minute, with which the memory of a ring takes 32 megabytes.
    static constexpr Frames kMostMeasuredInRing{(1 << 22) - (1 << 16)};

    /// The answer of the program's tag reader, any bytes; empty where there is none. As for Open.
    std::optional<std::string> ReadTags(const std::filesystem::path& file, std::string* why = nullptr);

    enum class Priority {
        Normal,
        Background,  ///< only while no other process of the system wants the processor
    };
    /// The loudness of a file's first `limit` frames, those that Open gives with the same options. Empty
    /// where it holds no sound, its decoder fails or takes very long, or `stop` is requested: that is no
    /// failure of the file, which is left to whoever plays it. Blocks meanwhile, minutes at most. Any thread
    /// but the mixing one.
    std::optional<Measurement> Measure(const std::filesystem::path& file, Frames limit,
                                       const DecodeOptions& options, Priority priority,
                                       const std::stop_token& stop = {});

    /// The failures since the last call. A file that caused its failure isn't opened again until
    /// ForgetBadFiles. Any thread.
    std::vector<DecoderFailure> TakeFailures();
    /// For a sound whose decoder has ended: records why, if it was a failure. Any thread but the mixing one.
    void RecordEnd(DecodedSound& sound);
    /// Before a sound is freed: kills its decoder, should it still run. Any thread but the
    /// mixing one.
    void End(const DecodedSound& sound);
    void ForgetBadFiles();
    /// For the application's end: every call returns at once, empty. Any thread.
    void Cancel();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::sound
