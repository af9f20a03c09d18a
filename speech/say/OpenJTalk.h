// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Open JTalk, a natural Japanese voice, where it stands on the machine together with a voice for it: a
// program that is run for each stretch of text. Nothing else of the project knows of it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

/// Where the system puts the three parts.
struct OpenJTalkPlaces {
    std::filesystem::path program = "/usr/bin/open_jtalk";
    std::filesystem::path dictionary = "/var/lib/mecab/dic/open-jtalk/naist-jdic";
    std::filesystem::path voices = "/usr/share/hts-voice";  ///< with *.htsvoice at any depth
};

/// How a speaker is made of a voice that is there.
struct OpenJTalkVoice {
    OpenJTalkPlaces places;
    std::filesystem::path voice;
    int halftones = 0;  ///< higher than the voice is by itself
    double speed = 1;
};

/// The voice for the speaker of that first name (folded), each speaker with a height of its own; a woman is
/// spoken by a woman's voice if there is one. Empty where a part is missing.
std::optional<OpenJTalkVoice> FindOpenJTalk(const OpenJTalkPlaces& places, std::string_view speaker,
                                            double speed);

/// The text in stretches that the program takes: sentences where possible.
std::vector<std::string_view> Stretches(std::string_view text);

/// Takes the sound of a stretch: its rate and its mono samples.
using OpenJTalkSink = std::function<void(int sampleRate, std::span<const std::int16_t> samples)>;

/// Speaks a text (as SpokenText gives it). Intermediate files stand in `folder` for a moment. Throws
/// std::runtime_error where the program fails.
void SpeakOpenJTalk(const OpenJTalkVoice& voice, std::string_view text, const std::filesystem::path& folder,
                    const OpenJTalkSink& sink);

}  // namespace sorakaze::speech
