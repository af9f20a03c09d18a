// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Numbers written in kanji: 三百六十五歩. The dictionary knows each sign alone, and none of the changes of
// sound where a sign meets the next or what is counted.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::kotoeri {

/// Whether all of `text` are numerals in kanji.
bool IsNumber(std::u32string_view text);

/// The reading in hiragana of a number and of what it counts, whose surface and own reading are given; both
/// empty where it counts nothing.
std::u32string ReadNumber(std::u32string_view number, std::u32string_view counter,
                          std::u32string_view counterReading);

}  // namespace sorakaze::kotoeri
