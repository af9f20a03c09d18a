// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/scripts/Chinese.h"

#include <algorithm>

#include "base/Utf8.h"
#include "base/unicode/Conversion.h"

namespace sorakaze::scripts {
namespace {

constexpr std::size_t kMostRead = 300;  // characters

bool IsKana(char32_t code) {
    return (code >= 0x3041 && code <= 0x30FA) || (code >= 0xFF66 && code <= 0xFF9D) || code == U'々';
}

bool IsOnlyChinese(char32_t code) {
    using unicode::Encoding;
    // Japanese encodings have it and nobody writes it.
    if (code == U'无') return true;
    return code >= 0x4E00 && code <= 0x9FFF && !unicode::Encodes(Encoding::ShiftJis, code) &&
           (unicode::Encodes(Encoding::Gb2312, code) || unicode::Encodes(Encoding::Big5, code));
}

/// Words that hold a Chinese sentence together, in characters that Japanese has as well.
bool IsFunctionWord(char32_t code) {
    return std::u32string_view(U"的我是不在有了會愛他這麼們還沒讓給對").find(code) !=
           std::u32string_view::npos;
}

}  // namespace

bool HasKana(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        if (IsKana(code)) return true;
        at += size;
    }
    return false;
}

bool HasOnlyChinese(std::u32string_view word) {
    return std::any_of(word.begin(), word.end(), IsOnlyChinese);
}

bool IsChinese(std::string_view text) {
    if (HasKana(text)) return false;
    std::u32string characters;
    for (std::size_t at = 0; at < text.size() && characters.size() < kMostRead;) {
        const auto [code, size] = utf8::Read(text, at);
        characters += code;
        at += size;
    }
    constexpr std::size_t kShortest = 4, kEnough = 2;
    const auto words = std::count_if(characters.begin(), characters.end(), IsFunctionWord);
    return HasOnlyChinese(characters) ||
           (characters.size() >= kShortest && static_cast<std::size_t>(words) >= kEnough);
}

}  // namespace sorakaze::scripts
