// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/unicode/Transliteration.h"

#include <unicode/translit.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>

namespace sorakaze::unicode {
namespace {

std::string Utf8Of(const icu::UnicodeString& text) {
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

std::unique_ptr<icu::Transliterator> Made(const char* rules) {
    UErrorCode error = U_ZERO_ERROR;
    UParseError where;
    std::unique_ptr<icu::Transliterator> made(icu::Transliterator::createFromRules(
        "Sorakaze", icu::UnicodeString::fromUTF8(rules), UTRANS_FORWARD, where, error));
    if (U_FAILURE(error))
        throw std::runtime_error(std::string("ICU takes no rules with \"") + Utf8Of(where.preContext) +
                                 Utf8Of(where.postContext) + "\": " + u_errorName(error));
    return made;
}

const icu::Transliterator& TransliteratorFor(const char* rules) {
    static std::mutex mutex;
    static std::map<const char*, std::unique_ptr<icu::Transliterator>> known;  // guarded by mutex
    const std::lock_guard lock(mutex);
    auto& transliterator = known[rules];
    if (!transliterator) transliterator = Made(rules);
    return *transliterator;
}

}  // namespace

std::string Transliterated(std::string_view utf8, const char* rules) {
    auto text = icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())});
    TransliteratorFor(rules).transliterate(text);
    return Utf8Of(text);
}

std::string ToPlainLatin(std::string_view utf8) {
    return Transliterated(utf8,
                          "::Russian-Latin/BGN; ::Greek-Latin/UNGEGN; ::Any-Latin; ::Latin-ASCII; ::Lower;");
}

}  // namespace sorakaze::unicode
