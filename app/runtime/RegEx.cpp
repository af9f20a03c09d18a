// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/RegEx.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <string>

#include "app/runtime/Exceptions.h"
#include "base/Utf8.h"

namespace sorakaze {
namespace {

/// The steps that one Replace may take in all. The library's own limit begins anew at each place of the text,
/// which a long text with many places makes quadratic. An ordinary Replace takes a few thousand.
constexpr std::uint64_t kStepLimit = 10'000'000;
constexpr std::uint32_t kHeapLimitKilobytes = 64 * 1024;

struct Free {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

PCRE2_SPTR Units(const std::string& text) {
    return reinterpret_cast<PCRE2_SPTR>(text.data());
}

/// The library looks for stray bytes in all the rest of the text at each match, unless it is promised that
/// there are none.
constexpr std::size_t kBytesAStep = 256;

Owned<pcre2_code> Compile(const std::string& pattern, std::uint32_t strayBytes) {
    int error = 0;
    PCRE2_SIZE offset = 0;
    Owned<pcre2_code> code(pcre2_compile(Units(pattern), pattern.size(),
                                         PCRE2_UTF | PCRE2_AUTO_CALLOUT | strayBytes, &error, &offset,
                                         nullptr));
    if (!code) {
        PCRE2_UCHAR message[256];
        pcre2_get_error_message(error, message, sizeof message);
        throw RegExException(std::string(reinterpret_cast<const char*>(message)) + " (at " +
                             std::to_string(offset) + ")");
    }
    return code;
}

/// Called at each item of the pattern that is tried.
int CountStep(pcre2_callout_block*, void* steps) {
    return ++*static_cast<std::uint64_t*>(steps) > kStepLimit ? PCRE2_ERROR_MATCHLIMIT : 0;
}

}  // namespace

String RegEx::Replace(const String& target) const {
    const std::string& text = target.Bytes();
    const bool wellFormed = utf8::IsWellFormed(text);
    const Owned<pcre2_code> code = Compile(SearchPattern.Bytes(), wellFormed ? 0 : PCRE2_MATCH_INVALID_UTF);
    const std::uint32_t check = wellFormed ? PCRE2_NO_UTF_CHECK : 0;
    const Owned<pcre2_match_data> match(pcre2_match_data_create_from_pattern(code.get(), nullptr));
    const Owned<pcre2_match_context> context(pcre2_match_context_create(nullptr));
    std::uint64_t steps = 0;
    pcre2_set_callout(context.get(), CountStep, &steps);
    pcre2_set_heap_limit(context.get(), kHeapLimitKilobytes);

    std::string result;
    std::size_t copied = 0;
    std::size_t from = 0;
    while (from <= text.size() &&
           pcre2_match(code.get(), Units(text), text.size(), from, check, match.get(), context.get()) > 0) {
        if (!wellFormed) steps += (text.size() - from) / kBytesAStep;
        const PCRE2_SIZE* bounds = pcre2_get_ovector_pointer(match.get());
        result.append(text, copied, bounds[0] - copied);
        result += ReplacementPattern.Bytes();
        copied = bounds[1];
        if (!Options.ReplaceAllMatches) break;
        // Behind an empty match the search goes on one character further.
        from = bounds[1];
        if (bounds[0] == bounds[1]) {
            do ++from;
            while (from < text.size() && (static_cast<unsigned char>(text[from]) & 0xC0) == 0x80);
        }
    }
    if (copied > text.size()) copied = text.size();
    return result.append(text, copied);
}

}  // namespace sorakaze
