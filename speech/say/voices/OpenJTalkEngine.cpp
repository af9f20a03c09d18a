// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/OpenJTalkEngine.h"

#include <utility>

namespace sorakaze::speech {

OpenJTalkEngine::OpenJTalkEngine(OpenJTalkVoice voice, double speed, std::filesystem::path scratch)
    : voice_(std::move(voice)), scratch_(std::move(scratch)) {
    voice_.speed = speed;
}

void OpenJTalkEngine::Speak(const std::string& text, const SpeechSink& sink) {
    SpeakOpenJTalk(voice_, text, scratch_, sink);
}

}  // namespace sorakaze::speech
