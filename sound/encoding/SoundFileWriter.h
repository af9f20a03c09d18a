// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Writes sound to a file in the format that the file's ending names. Used by the studio for whole shows and
// by the demo library's maker. Encoding and writing run on a thread of the writer's own, fed through a
// bounded queue.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "sound/Frames.h"

namespace sorakaze::sound {

/// One line that says what went wrong and what to do about it.
class SoundFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What 16-bit formats do with what lies below their last bit. The others don't care.
enum class Dither {
    None,        ///< Rounded: what was made of 16 bits comes out the same.
    Triangular,  ///< Noise of one bit hides the rounding, so that what is quiet stays clean. Silence stays.
};

class SoundSink;

class SoundFileWriter {
  public:
    /// The endings that Create knows, lower case with the point: ".wav", ".flac", ".opus", ".ogg" (Ogg Opus),
    /// ".mp3", and ".m4a", ".aiff", ".oga" (Ogg Vorbis) for the demo library.
    static std::vector<std::string> Endings();

    /// Begins `file`. An existing file stays untouched until Finish: the sound is written to a file beside
    /// it, which then takes its place. Throws SoundFileError for an unknown ending or a place that can't be
    /// written. `listener` is given the same sound on the
    /// writer's thread, and finished with the file.
    static std::unique_ptr<SoundFileWriter> Create(const std::filesystem::path& file,
                                                   Dither dither = Dither::None,
                                                   std::shared_ptr<SoundSink> listener = nullptr);

    /// Removes the unfinished files of this process in `folder`, for a process that is about to end without
    /// its destructors.
    static void RemoveUnfinished(const std::filesystem::path& folder);

    /// Without Finish, removes what was written.
    virtual ~SoundFileWriter() = default;

    /// Queues interleaved frames at kSampleRate. May wait for the encoder. Throws SoundFileError when an
    /// earlier block could not be written (a full disk, say).
    virtual void Write(std::span<const float> interleaved) = 0;

    /// Writes what is left and puts the file in its place. Throws SoundFileError.
    virtual void Finish() = 0;
};

}  // namespace sorakaze::sound
