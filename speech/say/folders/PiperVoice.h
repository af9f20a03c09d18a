// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

#include "speech/say/folders/PiperProgram.h"
#include "speech/say/folders/VoiceFolder.h"
#include "speech/say/voices/VoiceEngine.h"

namespace sorakaze::speech {

/// Piper's command line. Each text is a run of the program, which gets a line on its standard input and
/// writes a sound file into `scratch`; if it writes none, it is asked for raw samples.
class PiperVoice : public VoiceEngine {
  public:
    /// `speed` and `speaker` are Piper's. No run goes on after `deadline`.
    PiperVoice(PiperProgram program, VoiceModel model, int speaker, double speed,
               std::filesystem::path scratch, std::chrono::steady_clock::time_point deadline);
    void Speak(const std::string& text, const SpeechSink& sink) override;

  private:
    std::vector<std::string> Words() const;
    bool SpeakToFile(const std::string& line, const SpeechSink& sink) const;
    void SpeakRaw(const std::string& line, const SpeechSink& sink) const;

    const PiperProgram program_;
    const VoiceModel model_;
    const int speaker_;
    const double speed_;
    const std::filesystem::path scratch_;
    const std::chrono::steady_clock::time_point deadline_;
};

/// The text without what neural engines take as commands: brackets, which stand for phonemes.
std::string WithoutPhonemeMarks(std::string text);

}  // namespace sorakaze::speech
