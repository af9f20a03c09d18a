// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Texts as characters, and what kind of character each is. A byte that is no part of well-formed UTF-8 is a
// character of its own and comes out as the byte it was.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::kotoeri {

std::u32string Decode(std::string_view bytes);
std::string Encode(std::u32string_view text);

constexpr bool IsHiragana(char32_t code) {
    return code >= U'ぁ' && code <= U'ゖ';
}
constexpr bool IsKatakana(char32_t code) {
    return code >= U'ァ' && code <= U'ヶ';
}
/// With the long-vowel mark, which belongs to both.
constexpr bool IsKana(char32_t code) {
    return IsHiragana(code) || IsKatakana(code) || code == U'ー';
}
constexpr bool IsDigit(char32_t code) {
    return (code >= U'0' && code <= U'9') || (code >= U'０' && code <= U'９');
}
/// Chinese characters, with the marks that stand for one: 々 〆 〇.
constexpr bool IsKanji(char32_t code) {
    return (code >= 0x4E00 && code <= 0x9FFF) || (code >= 0x3400 && code <= 0x4DBF) ||
           (code >= 0xF900 && code <= 0xFAFF) || (code >= 0x20000 && code <= 0x3FFFF) ||
           (code >= U'々' && code <= U'〇');
}
/// Kana that are never the first of a word: small ones, the long-vowel mark, ん.
bool LeansOnWhatIsBefore(char32_t code);

bool IsAllKana(std::u32string_view text);

/// Katakana become hiragana. Kana that are no longer written, small ones that are no sound of their own and
/// ヴュ become those that are read alike. Everything else stays.
std::u32string ToHiragana(std::u32string_view text);

}  // namespace sorakaze::kotoeri
