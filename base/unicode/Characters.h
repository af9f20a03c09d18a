// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What Unicode's tables say of characters, and the text operations that follow from it. Codes that are no
// code points, such as those of stray bytes (base/Utf8.h), have no properties and fold to themselves. Pure
// functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sorakaze::unicode {

/// True for scripts without letter case that make up most Asian text: known without a look into the tables.
/// The characters are nobody else's case form either.
constexpr bool IsPlainlyCaseless(char32_t code) {
    return (code >= 0x2E80 && code < 0xA640) || (code >= 0xAC00 && code < 0xD800);
}

/// Looked up in the tables; Fold is the same and faster.
char32_t FoldFromTables(char32_t code);

/// The simple case folding of Unicode: one character to one character.
inline char32_t Fold(char32_t code) {
    if (code < 0x80) return code - 'A' < 26u ? code + 32 : code;
    return IsPlainlyCaseless(code) ? code : FoldFromTables(code);
}

/// The simple lower case: one character to one character.
char32_t Lower(char32_t code);

/// The property White_Space.
bool IsWhiteSpace(char32_t code);
/// Letters and decimal digits of every script; no marks.
bool IsAlphanumeric(char32_t code);
/// True for the voicing marks of kana (combining class 8), which make another sound and not another accent.
bool IsKanaVoicingMark(char32_t code);

/// The four letters that name a character's script, as "Cyrl"; "Zyyy" for what many scripts share, "Zinh" for
/// marks, "Zzzz" for none.
std::string_view ScriptOf(char32_t code);

/// The value of a decimal digit of any script, as ७; nothing for other characters.
std::optional<int> DecimalDigit(char32_t code);

/// The columns that a terminal gives a character: 2 for the wide ones of East Asia, 0 for marks and joiners.
int ColumnsOf(char32_t code);

/// A part of `utf8`: without white space at its start.
std::string_view TrimmedAtStart(std::string_view utf8);
/// The same, at both ends.
std::string_view Trimmed(std::string_view utf8);

/// The full case folding, in which a character can become several: for comparisons that ignore letter case.
/// Bytes that aren't UTF-8 become replacement characters.
std::string FoldedCase(std::string_view utf8);

}  // namespace sorakaze::unicode
