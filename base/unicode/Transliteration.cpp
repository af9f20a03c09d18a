// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/unicode/Transliteration.h"

#include <unicode/translit.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace sorakaze::unicode {
namespace {

/// Nullptr if ICU has none of that name.
const icu::Transliterator* TransliteratorFor(const char* name) {
    static std::mutex mutex;
    static std::map<std::string, std::unique_ptr<icu::Transliterator>, std::less<>>
        known;  // guarded by mutex
    const std::lock_guard lock(mutex);
    const auto found = known.find(std::string_view(name));
    if (found != known.end()) return found->second.get();
    UErrorCode error = U_ZERO_ERROR;
    std::unique_ptr<icu::Transliterator> made(
        icu::Transliterator::createInstance(icu::UnicodeString::fromUTF8(name), UTRANS_FORWARD, error));
    if (U_FAILURE(error)) made.reset();
    return known.emplace(name, std::move(made)).first->second.get();
}

}  // namespace

std::string Transliterated(std::string_view utf8, const char* transliterator) {
    auto text = icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())});
    if (const icu::Transliterator* const rules = TransliteratorFor(transliterator))
        rules->transliterate(text);
    std::string result;
    text.toUTF8String(result);
    return result;
}

std::string ToPlainLatin(std::string_view utf8) {
    return Transliterated(utf8, "Russian-Latin/BGN; Greek-Latin/UNGEGN; Any-Latin; Latin-ASCII; Lower");
}

}  // namespace sorakaze::unicode
