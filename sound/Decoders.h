// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The processes that read foreign sound files. Every file is decoded, and its tags are read, by a process of
// its own, confined so that it reaches nothing but that file and the memory that its sound goes to; they are
// forked from one that is kept warm. A file that ends, holds up or outgrows its process costs no other one.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sound/DecodedSound.h"

namespace sorakaze::sound {

/// A file that could not be read to its end because its decoder failed.
struct DecoderFailure {
    std::filesystem::path file;
    std::string why;  ///< in words for a line of text
};

class Decoders {
  public:
    enum class Pace {
        Device,  ///< the frames are taken in true time
        Fast,    ///< as fast as they come: the decoder uses more than one core where it can
    };

    /// `program` is sorakaze-decoder. It is started at once, on a thread of this object's own, and again
    /// whenever it has ended.
    /// A decoder may take `longestStandstill` for an answer or for its next frames.
    explicit Decoders(std::filesystem::path program,
                      std::chrono::milliseconds longestStandstill = kLongestStandstill);
    /// Sounds that are still held end.
    ~Decoders();
    Decoders(const Decoders&) = delete;
    Decoders& operator=(const Decoders&) = delete;

    /// Those that all engines of this process share: of the sorakaze-decoder beside the running program.
    static std::shared_ptr<Decoders> OfProcess();
    /// For programs that lie elsewhere, before the first call of OfProcess.
    static void SetProgramOfProcess(std::filesystem::path program);

    /// Empty when the file can't be read or holds no sound that can be decoded; the first frames are there
    /// when this returns. Blocks for file I/O and for the decoder, some seconds at most. Any thread but the
    /// mixing one; never throws for bad files.
    std::unique_ptr<DecodedSound> Open(const std::filesystem::path& file, Pace pace);

    /// The answer of the program's tag reader, any bytes; empty where there is none. As for Open.
    std::optional<std::string> ReadTags(const std::filesystem::path& file);

    /// The failures since the last call. Files among them that did it themselves aren't read any more until
    /// ForgetBadFiles. Any thread.
    std::vector<DecoderFailure> TakeFailures();
    /// For a sound whose decoder has ended: notes why, if it was a failure. Any thread but the mixing one.
    void TakeEnd(DecodedSound& sound);
    /// Before a sound is freed: its decoder ends, even if it takes no notice of that. Any thread but the
    /// mixing one.
    void End(const DecodedSound& sound);
    void ForgetBadFiles();
    /// The application ends: every call returns at once, with nothing. Any thread, also in a signal's stead.
    void Cancel();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::sound
