// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/scripts/PlainLetters.h"

#include <algorithm>
#include <iterator>

#include "base/Utf8.h"
#include "base/unicode/Characters.h"
#include "base/unicode/Normalization.h"
#include "base/unicode/Transliteration.h"

namespace sorakaze::scripts {
namespace {

struct Range {
    char32_t first, last;
    bool Has(char32_t code) const { return code >= first && code <= last; }
};

template <std::size_t kCount>
bool IsIn(const Range (&ranges)[kCount], char32_t code) {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [code](const Range& range) { return range.Has(code); });
}

/// Letters whose compatibility form is what they look like: script capitals, roman numerals, letters in
/// circles, ligatures, full-width and mathematical letters, letters in squares. Without ™, № and their like.
constexpr Range kOrnaments[] = {{0x2102, 0x2115}, {0x2119, 0x211D},   {0x2124, 0x2124},  {0x2128, 0x2128},
                                {0x212C, 0x2134}, {0x2160, 0x217F},   {0x24B6, 0x24E9},  {0xFB00, 0xFB06},
                                {0xFF01, 0xFF5E}, {0x1D400, 0x1D7FF}, {0x1F130, 0x1F149}};
/// Phonetic letters, among them small capitals.
constexpr Range kPhonetic[] = {{0x250, 0x2AF}, {0x1D00, 0x1D2B}};

/// White letters in dark circles and squares, which have no compatibility form.
char32_t Unboxed(char32_t code) {
    if (code >= 0x1F150 && code <= 0x1F169) return U'A' + (code - 0x1F150);
    if (code >= 0x1F170 && code <= 0x1F189) return U'A' + (code - 0x1F170);
    return code;
}

bool IsPlain(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        if (!unicode::IsAlphanumeric(code)) return false;
        at += size;
    }
    return !text.empty();
}

std::string PlainForm(char32_t code, std::string_view character) {
    if (const auto digit = unicode::DecimalDigit(code)) return {static_cast<char>('0' + *digit)};
    if (const char32_t letter = Unboxed(code); letter != code) return {static_cast<char>(letter)};
    if (IsIn(kOrnaments, code)) return unicode::Normalized(character, unicode::NormalForm::Nfkc);
    return IsIn(kPhonetic, code) ? unicode::Transliterated(character, "::Latin-ASCII;") : std::string();
}

}  // namespace

std::string PlainLetters(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        const std::string_view character = text.substr(at, size);
        const std::string form = size == 1 ? std::string() : PlainForm(code, character);
        plain += IsPlain(form) ? std::string_view(form) : character;
        at += size;
    }
    return plain;
}

}  // namespace sorakaze::scripts
