// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::gateway {

/// The voice of the program say that speaks for `name`: a Japanese first name in Latin letters, kana or
/// kanji, alone or the first of several words, "female", "male", or the number of a speaker. Whom nobody
/// knows is spoken for by the first speaker. The result is one of a few fixed words.
std::string SpeakerVoice(std::string_view name);

}  // namespace sorakaze::gateway
