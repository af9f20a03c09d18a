// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Composing and decomposing text. Pure functions.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::unicode {

/// Unicode's normal forms. The K forms also replace compatibility characters: ① becomes 1.
enum class NormalForm { Nfc, Nfd, Nfkc, Nfkd };

/// The text in a normal form. Bytes that aren't UTF-8 become replacement characters. The text as it is if
/// there is no memory or it is too long for ICU.
std::string Normalized(std::string_view utf8, NormalForm form);
/// The same for code points, all of which are valid.
std::u32string Normalized(std::u32string_view text, NormalForm form);

/// The one character that a character and the mark after it compose to, as か and U+3099 to が; 0 if there is
/// none.
char32_t ComposedPair(char32_t character, char32_t mark);
/// The first character of a canonical decomposition into two, as か of が; `character` if it has no such.
char32_t WithoutMark(char32_t character);

}  // namespace sorakaze::unicode
