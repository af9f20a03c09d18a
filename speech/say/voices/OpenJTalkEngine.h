// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

#include "speech/say/voices/OpenJTalk.h"
#include "speech/say/voices/VoiceEngine.h"

namespace sorakaze::speech {

/// Open JTalk, in Japanese.
class OpenJTalkEngine : public VoiceEngine {
  public:
    OpenJTalkEngine(OpenJTalkVoice voice, double speed, std::filesystem::path scratch);

    void Speak(const std::string& text, const SpeechSink& sink) override;

  private:
    OpenJTalkVoice voice_;
    std::filesystem::path scratch_;
};

}  // namespace sorakaze::speech
