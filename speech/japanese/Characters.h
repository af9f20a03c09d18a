// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Texts as characters, and what kind of character each is. A byte that is no part of well-formed UTF-8 is a
// character of its own and is encoded as that byte again. Pure functions.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::japanese {

std::u32string Decode(std::string_view bytes);
std::string Encode(std::u32string_view text);

constexpr bool IsHiragana(char32_t code) {
    return code >= U'ぁ' && code <= U'ゖ';
}
constexpr bool IsKatakana(char32_t code) {
    return code >= U'ァ' && code <= U'ヶ';
}
/// Includes the long-vowel mark.
constexpr bool IsKana(char32_t code) {
    return IsHiragana(code) || IsKatakana(code) || code == U'ー';
}
constexpr bool IsDigit(char32_t code) {
    return (code >= U'0' && code <= U'9') || (code >= U'０' && code <= U'９');
}
/// Chinese characters, and the marks that replace one: 々 〆 〇.
constexpr bool IsKanji(char32_t code) {
    return (code >= 0x4E00 && code <= 0x9FFF) || (code >= 0x3400 && code <= 0x4DBF) ||
           (code >= 0xF900 && code <= 0xFAFF) || (code >= 0x20000 && code <= 0x3FFFF) ||
           (code >= U'々' && code <= U'〇');
}
/// True for kana that never start a word: small ones, the long-vowel mark, ん.
bool CannotStartWord(char32_t code);

bool IsAllKana(std::u32string_view text);

/// Replaces katakana by hiragana, and obsolete kana (ゐ), unpronounceable small ones (ヶ) and ヴュ by kana
/// that sound the same. Everything else stays.
std::u32string ToHiragana(std::u32string_view text);
/// Replaces hiragana by katakana. Everything else stays.
std::u32string ToKatakana(std::u32string_view text);

}  // namespace sorakaze::japanese
