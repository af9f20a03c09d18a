// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/unicode/Normalization.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <optional>

namespace sorakaze::unicode {
namespace {

/// Nullptr if ICU's data is missing.
const icu::Normalizer2* NormalizerFor(NormalForm form) {
    UErrorCode error = U_ZERO_ERROR;
    switch (form) {
        case NormalForm::Nfc:
            return icu::Normalizer2::getNFCInstance(error);
        case NormalForm::Nfd:
            return icu::Normalizer2::getNFDInstance(error);
        case NormalForm::Nfkc:
            return icu::Normalizer2::getNFKCInstance(error);
        case NormalForm::Nfkd:
            return icu::Normalizer2::getNFKDInstance(error);
    }
    return nullptr;
}

std::optional<icu::UnicodeString> Normalized(const icu::UnicodeString& text, NormalForm form) {
    const icu::Normalizer2* normalizer = NormalizerFor(form);
    if (!normalizer) return {};
    UErrorCode error = U_ZERO_ERROR;
    icu::UnicodeString normalized = normalizer->normalize(text, error);
    if (U_FAILURE(error)) return {};
    return normalized;
}

}  // namespace

std::string Normalized(std::string_view utf8, NormalForm form) {
    const auto text = icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())});
    std::string result;
    Normalized(text, form).value_or(text).toUTF8String(result);
    return result;
}

std::u32string Normalized(std::u32string_view text, NormalForm form) {
    const auto size = static_cast<std::int32_t>(text.size());
    const auto normalized =
        Normalized(icu::UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(text.data()), size), form);
    if (!normalized) return std::u32string(text);
    std::u32string result(static_cast<std::size_t>(normalized->countChar32()), U'\0');
    UErrorCode error = U_ZERO_ERROR;
    normalized->toUTF32(reinterpret_cast<UChar32*>(result.data()), static_cast<std::int32_t>(result.size()),
                        error);
    return result;
}

char32_t ComposedPair(char32_t character, char32_t mark) {
    const icu::Normalizer2* normalizer = NormalizerFor(NormalForm::Nfc);
    const UChar32 pair =
        normalizer ? normalizer->composePair(static_cast<UChar32>(character), static_cast<UChar32>(mark))
                   : -1;
    return pair < 0 ? 0 : static_cast<char32_t>(pair);
}

char32_t WithoutMark(char32_t character) {
    const icu::Normalizer2* normalizer = NormalizerFor(NormalForm::Nfc);
    icu::UnicodeString parts;
    if (!normalizer || !normalizer->getRawDecomposition(static_cast<UChar32>(character), parts))
        return character;
    return parts.countChar32() == 2 ? static_cast<char32_t>(parts.char32At(0)) : character;
}

}  // namespace sorakaze::unicode
