// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/pronunciation/SpelledText.h"

#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze::speech {
namespace {

bool IsHyphen(char32_t code) {
    return code == U'-' || code == U'‐' || code == U'‑' || code == 0xAD;
}

char32_t Plain(char32_t code) {
    if (code >= 0xFF01 && code <= 0xFF5E) code -= 0xFF01 - U'!';
    if (code == U'‘' || code == U'’' || code == U'´') return U'\'';
    if (unicode::IsWhiteSpace(code)) return U' ';
    return unicode::Fold(code);
}

bool IsEastAsian(char32_t code) {
    return code >= 0x3005 && (code < 0xA000 || code >= 0xAC00);
}

/// A combining mark belongs to the letter before it.
bool IsOfWord(char32_t code) {
    return unicode::IsAlphanumeric(code) || (code >= 0x300 && code < 0x370);
}

}  // namespace

SpelledText::SpelledText(std::string_view text) {
    bool isParted = false;
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        const char32_t plain = Plain(code);
        const bool isBlank = plain == U' ';
        if (IsHyphen(plain)) {
            isParted = true;
        } else if (!isBlank || (!characters.empty() && characters.back() != U' ')) {
            characters += plain;
            begins.push_back(at);
            ends.push_back(at + size);
            parted.push_back(isParted);
            isParted = false;
        }
        at += size;
    }
}

bool SpelledText::IsBetweenWords(std::size_t at) const {
    if (at == 0 || at >= characters.size()) return true;
    const char32_t before = characters[at - 1], after = characters[at];
    if (parted[at]) return true;
    // "don't" is one word; "Prince's" is a name and an ending.
    const auto follows = [this](std::size_t index) {
        return index < characters.size() && unicode::IsAlphanumeric(characters[index]);
    };
    if (after == U'\'' && IsOfWord(before) && follows(at + 1))
        return characters[at + 1] == U's' && !follows(at + 2);
    if (before == U'\'' && at >= 2 && IsOfWord(characters[at - 2]) && IsOfWord(after)) return false;
    if (IsOfWord(before) && IsOfWord(after)) return IsEastAsian(before) != IsEastAsian(after);
    // A name of marks isn't a part of a longer row of them: "!!!".
    return before != after || before == U' ';
}

}  // namespace sorakaze::speech
