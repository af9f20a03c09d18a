// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How numbers are read, in digits, in kanji (三百六十五) or in both (5千), alone and with what they count.
// The dictionary knows neither the changes of sound within a number nor those between a number and its
// counter. Pure functions; readings are hiragana.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sorakaze::japanese {

/// Whether all characters are numerals in kanji. 何 is one: 何百.
bool IsKanjiNumerals(std::u32string_view text);

/// The reading of a number, in which "." is the decimal point; empty for what is no number. Without units
/// (二〇二四, 2024) it is a whole number, but 007 and 三四 are read digit by digit, and so is a number above
/// ten quadrillion.
std::u32string ReadNumber(std::u32string_view number);

/// The value of a whole number in digits or in kanji below ten quadrillion; nothing for any other text.
std::optional<std::uint64_t> NumberValue(std::u32string_view number);

/// Changes a number's reading to its form before a counter in k, s, t or p where one, eight or ten have such:
/// いち to いっ. False if nothing was changed.
bool ChangeBeforeHardSound(std::u32string& reading);
/// Replaces the end of `text`; false if it ends differently.
bool ReplaceEnd(std::u32string& text, std::u32string_view end, std::u32string_view replacement);

}  // namespace sorakaze::japanese
