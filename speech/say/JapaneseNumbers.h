// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How numbers are spoken in Japanese, with the sound changes between a number and what it counts.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::speech {

/// A number as it stands in a text: digits of ASCII with "," between thousands and ".", or kanji ("二千三",
/// "二〇二四"), or both ("5千"). Empty for what is none. In katakana.
std::string ReadNumber(std::string_view number);

/// The number and the counter behind it: ("4", "人", "ニン") is "ヨニン". `counterKana` is what the
/// dictionary has for it. `behindMonth` tells the first of a month from one day.
std::string ReadCounted(std::string_view number, std::string_view counter, std::string_view counterKana,
                        bool behindMonth);

}  // namespace sorakaze::speech
