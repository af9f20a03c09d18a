// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Open JTalk, a natural Japanese voice, if it is installed together with a voice for it: a program that is
// run for each chunk of text. Nothing else of the project knows of it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "speech/say/voices/VoiceEngine.h"

namespace sorakaze::speech {

/// Where the system has the three parts.
struct OpenJTalkPaths {
    std::filesystem::path program = "/usr/bin/open_jtalk";
    std::filesystem::path dictionary = "/var/lib/mecab/dic/open-jtalk/naist-jdic";
    std::filesystem::path voices = "/usr/share/hts-voice";  ///< holds *.htsvoice at any depth
};

/// How a speaker is made from an installed voice.
struct OpenJTalkVoice {
    OpenJTalkPaths places;
    std::filesystem::path voice;
    int semitones = 0;  ///< above the voice's own pitch
    double speed = 1;
};

/// The voice for the speaker of that first name (folded). Each speaker has a pitch of her own, and a woman's
/// voice for a woman if there is one. Nothing if a part is missing.
std::optional<OpenJTalkVoice> FindOpenJTalk(const OpenJTalkPaths& places, std::string_view speaker,
                                            double speed);

/// The text in chunks that the program accepts: sentences if possible.
std::vector<std::string_view> Chunks(std::string_view text);

/// Speaks a text that SpokenText returned. Makes temporary files in `folder`. Throws std::runtime_error if
/// the program fails.
void SpeakOpenJTalk(const OpenJTalkVoice& voice, std::string_view text, const std::filesystem::path& folder,
                    const SpeechSink& sink);

}  // namespace sorakaze::speech
