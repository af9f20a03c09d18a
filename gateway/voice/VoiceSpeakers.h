// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::gateway {

/// Whether SpeakerVoice knows the name.
bool IsSpeaker(std::string_view name);

/// The voice of the program say for the speaker `name`: a Japanese first name in Latin letters, kana or
/// kanji, alone or as the first of several words, "female", "male", or a speaker's number. An unknown name
/// gets the first voice. The result is one of a few fixed words.
std::string SpeakerVoice(std::string_view name);

}  // namespace sorakaze::gateway
