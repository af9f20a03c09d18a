// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The steps of ReadAloud, in their order. Each is linear.
#pragma once

#include <string>
#include <string_view>

#include "speech/reading/Languages.h"
#include "speech/reading/Tokens.h"

namespace sorakaze::reading {

/// Leaves out emoji and signs without a sound, brings marks and signs into their plain form, and shortens
/// what is repeated: "!!!" and "nooooooo".
std::string CleanMarks(std::string_view text, Main voice);

/// "https://www.example.com/about" becomes "example dot com slash about".
std::string WithWebAddressesInWords(std::string_view text, Main voice);

/// Keys of classical titles, also those whose hyphen was removed: "cis moll", "bflat major".
void ReadKeys(Sentence& sentence, Main voice);

/// Roman numerals become digits, or ordinals after a ruler's name. A word that only looks like a numeral
/// stays.
void ReadRomanNumerals(Sentence& sentence, Main voice);

/// "op.", "no.", "feat." and their like.
void ReadAbbreviations(Sentence& sentence, Main voice);

/// Years, decades and ordinals in words; very long numbers are cut.
void ReadNumbers(Sentence& sentence, Main voice);

/// "&", "+", "#" and their like.
void ReadSigns(Sentence& sentence, Main voice);

/// Words in capitals are said as words, initialisms letter by letter; very long words are cut.
void ReadCapitals(Sentence& sentence, Main voice);

}  // namespace sorakaze::reading
