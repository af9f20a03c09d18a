// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

#include "speech/say/Leveller.h"
#include "speech/say/LongestSpeech.h"
#include "speech/say/SpeechFile.h"

namespace sorakaze::speech {

/// Levels the samples of one voice into a sound file, which appears when it is complete. Their rate is known
/// with the first of them.
class Recorder {
  public:
    explicit Recorder(std::filesystem::path file) : file_(std::move(file)) {}

    /// Before the first samples of a voice.
    void Prepare(Leveller::Settings settings) { settings_ = settings; }
    /// Throws SpeechCut when the speech is too long, std::runtime_error if the file can't be written or the
    /// rate is none.
    void Write(int sampleRate, std::span<const std::int16_t> samples, BlockStart start);
    /// Makes the file complete. Something has been written.
    void Finish();
    /// Whether a sample was loud enough to be heard.
    bool HasSound() const { return hasSound_; }
    /// Drops all, so that another voice can start again.
    void Reset();

  private:
    std::filesystem::path file_;
    Leveller::Settings settings_;
    int sampleRate_ = 0;
    bool hasSound_ = false;
    std::optional<SpeechFile> sound_;
    std::optional<Leveller> leveller_;
    std::optional<SpeechCutter> cutter_;
};

}  // namespace sorakaze::speech
