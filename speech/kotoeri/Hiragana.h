// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Writes Japanese text as its reading: kanji and katakana become hiragana, with commas between words.
#pragma once

#include <string>
#include <string_view>

#include "speech/japanese/Reader.h"

namespace sorakaze::kotoeri {

/// The reading of any bytes. Readings, not pronunciations: the particle は stays は. What has no reading
/// stays as it is: Latin letters, digits, other scripts, emoji, stray bytes. A middle dot or a wide blank
/// between words becomes a comma. A word's final っ, which has no sound to double, is left out. Time and
/// memory are linear in the text.
std::string InHiragana(const japanese::Reader& reader, std::string_view text);

/// What can be read without a dictionary: kana become hiragana, everything else stays.
std::string InHiraganaWithoutDictionary(std::string_view text);

}  // namespace sorakaze::kotoeri
