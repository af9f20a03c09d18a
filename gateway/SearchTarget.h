// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a request's target asks of the encyclopaedia. A search holds the artist's name as the listener's music
// has it: blanks have become "+", and nothing else is encoded. So it is read from its known ends, and no
// character in between ends it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "gateway/Edition.h"

namespace sorakaze::gateway {

struct Search {
    Edition edition = Edition::English;
    std::string name;
};

/// Of "/search?hl=en&q=NAME+HOST&btnI=I'm+feeling+Lucky". The host isn't looked at: `hl` tells the edition.
/// Nothing if it is no search, or the name is empty, longer than 255 bytes (no title is) or not UTF-8.
std::optional<Search> ParseSearch(std::string_view target);

struct ArticleAddress {
    Edition edition = Edition::English;
    std::string title;
};

/// Of "/wiki/en/TITLE", the title percent-encoded.
std::optional<ArticleAddress> ParseArticleAddress(std::string_view target);

/// The other way round.
std::string ArticleTarget(const ArticleAddress& address);

}  // namespace sorakaze::gateway
