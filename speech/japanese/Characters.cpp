// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/Characters.h"

#include <algorithm>

#include "base/Utf8.h"

namespace sorakaze::japanese {

std::u32string Decode(std::string_view bytes) {
    std::u32string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        const utf8::Character character = utf8::Read(bytes, at);
        text += character.code;
        at += character.size;
    }
    return text;
}

std::string Encode(std::u32string_view text) {
    std::string bytes;
    bytes.reserve(text.size() * 3);
    for (const char32_t code : text) utf8::Append(bytes, code);
    return bytes;
}

bool CannotStartWord(char32_t code) {
    return std::u32string_view(U"ぁぃぅぇぉゃゅょゎっんーァィゥェォャュョヮッン").find(code) !=
           std::u32string_view::npos;
}

bool IsAllKana(std::u32string_view text) {
    return std::all_of(text.begin(), text.end(), IsKana);
}

std::u32string ToHiragana(std::u32string_view text) {
    std::u32string result;
    result.reserve(text.size());
    for (char32_t code : text) {
        if (IsKatakana(code)) code -= U'ァ' - U'ぁ';
        switch (code) {
            case U'ゐ':
                code = U'い';
                break;
            case U'ゑ':
                code = U'え';
                break;
            case U'ゎ':
                code = U'わ';
                break;
            case U'ゕ':
                code = U'か';
                break;
            case U'ゖ':
                code = U'け';
                break;
            default:
                break;
        }
        const bool isGlide = code == U'ゃ' || code == U'ゅ' || code == U'ょ';
        if (isGlide && !result.empty() && result.back() == U'ゔ') result.back() = U'び';
        result += code;
    }
    return result;
}

std::u32string ToKatakana(std::u32string_view text) {
    std::u32string result(text);
    for (char32_t& code : result) {
        if (IsHiragana(code)) code += U'ァ' - U'ぁ';
    }
    return result;
}

}  // namespace sorakaze::japanese
