// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>

struct sf_private_tag;

namespace sorakaze::speech {

/// The sound can't be written; one line for the user.
struct SpeechFileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A mono 16-bit sound file, WAV if its name ends so and AIFF otherwise, that appears under its name only
/// when it is complete. Until Finish the sound is in a file of another name, in the same folder if that is
/// writable; it is removed with this object, and also when a signal ends the program. A file that can be
/// written but not replaced gets the whole sound at once. One at a time in a process. Errors are
/// SpeechFileError.
class SpeechFile {
  public:
    SpeechFile(std::filesystem::path file, int sampleRate);
    ~SpeechFile();
    SpeechFile(const SpeechFile&) = delete;
    SpeechFile& operator=(const SpeechFile&) = delete;

    void Write(std::span<const std::int16_t> samples);
    void Finish();

  private:
    std::filesystem::path file_;
    std::string unfinished_;  ///< empty once it has its name
    sf_private_tag* sound_ = nullptr;
};

}  // namespace sorakaze::speech
