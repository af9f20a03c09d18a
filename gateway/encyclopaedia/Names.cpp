// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/Names.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <utility>

namespace sorakaze::gateway {
namespace {

/// For letters that Unicode doesn't decompose into a plain one and an accent.
const char* PlainLetters(UChar32 letter) {
    switch (letter) {
        case U'&':
        case U'+':
            return "and";
        case U'ø':
            return "o";
        case U'đ':
        case U'ð':
            return "d";
        case U'ł':
            return "l";
        case U'ı':
            return "i";
        case U'æ':
            return "ae";
        case U'œ':
            return "oe";
        case U'þ':
            return "th";
        default:
            return nullptr;
    }
}

icu::UnicodeString Folded(std::string_view name) {
    auto text = icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKDInstance(error);
    if (U_SUCCESS(error)) text = normalizer->normalize(text, error);
    return text.foldCase().trim();
}

icu::UnicodeString ComparisonKey(std::string_view name) {
    icu::UnicodeString text = Folded(name);
    if (text.startsWith(u"the ")) text.remove(0, 4);
    if (text.endsWith(u", the")) text.truncate(text.length() - 5);
    icu::UnicodeString plain;
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
        const UChar32 character = text.char32At(at);
        if (const char* letters = PlainLetters(character)) {
            plain.append(icu::UnicodeString(letters, -1, US_INV));
        } else if (u_isalnum(character) || u_getCombiningClass(character) == 8) {
            // Class 8 are the voicing marks of kana: they make another sound, so they count.
            plain.append(character);
        }
    }
    // Some bands' names are nothing but marks.
    return plain.isEmpty() ? text : plain;
}

}  // namespace

std::string_view WithoutQualifier(std::string_view title) {
    const std::size_t bracket = title.rfind(" (");
    if (!title.ends_with(')') || bracket == title.npos || bracket == 0) return title;
    return title.substr(0, bracket);
}

bool SameName(std::string_view one, std::string_view other) {
    return ComparisonKey(one) == ComparisonKey(other);
}

}  // namespace sorakaze::gateway
