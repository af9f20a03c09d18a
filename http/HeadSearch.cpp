// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "http/HeadSearch.h"

#include <algorithm>
#include <utility>

namespace sorakaze::http {

std::optional<HeadSearch::HeadEnd> HeadSearch::FindEnd(std::string_view text, std::uint64_t position) {
    if (position != position_) *this = HeadSearch();
    position_ = position;
    const std::size_t searched = std::exchange(searched_, text.size());
    for (std::size_t i = 0; i < kPatternCount; ++i) {
        // It may begin in the last bytes of the search before.
        const std::size_t from = searched - std::min(searched, kPatterns[i].size() - 1);
        if (!places_[i].Found()) places_[i].at = text.find(kPatterns[i], from);
        if (places_[kCrLfTwice].Found()) return HeadEnd{places_[kCrLfTwice].at, 2};
    }
    const bool usesLf = !places_[kCrLfOnce].Found() && places_[kLfOnce].Found();
    for (const Pattern end : {usesLf ? kLfTwice : kCrTwice, kCrTwice, kLfTwice}) {
        if (places_[end].Found()) return HeadEnd{places_[end].at, 1};
    }
    return std::nullopt;
}

}  // namespace sorakaze::http
