// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The file into which a program that speaks writes its sound.
#pragma once

#include <filesystem>
#include <string>

#include "base/FileDescriptor.h"
#include "speech/say/voices/VoiceEngine.h"

namespace sorakaze::speech {

/// An empty file that is removed at the end of its scope.
class SoundFile {
  public:
    /// Throws std::runtime_error if it can't be made.
    explicit SoundFile(const std::filesystem::path& folder);
    ~SoundFile();
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    const std::string& Name() const { return name_; }

    /// Passes its samples on, as if their rate were `size` times what the file says. True if it is a sound of
    /// one channel with at least one sample.
    bool Pass(const SpeechSink& sink, double size = 1) const;

  private:
    std::string name_;
    FileDescriptor descriptor_;
};

}  // namespace sorakaze::speech
