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
    for (std::size_t i = 0; i < kTextCount; ++i) {
        // It may have begun in the last bytes of the search before.
        const std::size_t from = searched - std::min(searched, kTexts[i].size() - 1);
        if (!places_[i].Found()) places_[i].at = text.find(kTexts[i], from);
        if (places_[kCrLfTwice].Found()) return HeadEnd{places_[kCrLfTwice].at, 2};
    }
    const bool showsLf = !places_[kCrLfOnce].Found() && places_[kLfOnce].Found();
    for (const Text end : {showsLf ? kLfTwice : kCrTwice, kCrTwice, kLfTwice}) {
        if (places_[end].Found()) return HeadEnd{places_[end].at, 1};
    }
    return std::nullopt;
}

}  // namespace sorakaze::http
