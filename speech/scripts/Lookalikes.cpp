// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/scripts/Lookalikes.h"

#include <algorithm>
#include <iterator>

#include "base/Ascii.h"

namespace sorakaze::scripts {
namespace {

struct Lookalike {
    std::string_view letter;
    char latin;
};

constexpr Lookalike kLookalikes[] = {{"α", 'a'}, {"λ", 'a'}, {"д", 'a'}, {"а", 'a'}, {"ε", 'e'}, {"ξ", 'e'},
                                     {"σ", 'e'}, {"е", 'e'}, {"з", 'e'}, {"η", 'n'}, {"и", 'n'}, {"θ", 'o'},
                                     {"ο", 'o'}, {"о", 'o'}, {"ρ", 'p'}, {"р", 'p'}, {"я", 'r'}, {"с", 'c'},
                                     {"τ", 't'}, {"т", 't'}, {"υ", 'u'}, {"μ", 'u'}, {"ν", 'v'}, {"ω", 'w'},
                                     {"ш", 'w'}, {"х", 'x'}, {"у", 'y'}};

bool IsLetter(std::string_view text, std::size_t at) {
    return at < text.size() && ascii::IsLetter(text[at]);
}

bool TouchesLatin(std::string_view text, std::string_view context) {
    for (auto at = context.find(text); at != context.npos; at = context.find(text, at + text.size()))
        if (IsLetter(context, at + text.size()) || (at > 0 && IsLetter(context, at - 1))) return true;
    return false;
}

}  // namespace

std::string LookalikeOf(std::string_view text, std::string_view context) {
    const auto* found = std::find_if(std::begin(kLookalikes), std::end(kLookalikes),
                                     [text](const Lookalike& known) { return known.letter == text; });
    if (found == std::end(kLookalikes) || !TouchesLatin(text, context)) return {};
    return {found->latin};
}

}  // namespace sorakaze::scripts
