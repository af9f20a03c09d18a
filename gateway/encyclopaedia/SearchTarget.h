// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads the targets of requests to the encyclopaedia. A search holds the artist's name as it is in the
// listener's music: blanks are "+", and nothing else is encoded. So any character can be part of the name,
// which is found between the known beginning and end of the target. Pure functions; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "gateway/encyclopaedia/Edition.h"

namespace sorakaze::gateway {

struct Search {
    Edition edition = Edition::English;
    std::string name;
};

/// Reads "/search?hl=en&q=NAME+HOST&btnI=I'm+feeling+Lucky". `hl` gives the edition; the host is ignored.
/// Nullopt if it is no search, or if the name is empty, longer than 255 bytes (no title is) or not UTF-8.
std::optional<Search> ParseSearch(std::string_view target);

struct ArticleAddress {
    Edition edition = Edition::English;
    std::string title;
};

/// Reads "/wiki/en/TITLE", the title percent-encoded. Nullopt as above.
std::optional<ArticleAddress> ParseArticleAddress(std::string_view target);

/// Makes what ParseArticleAddress reads.
std::string ArticleTarget(const ArticleAddress& address);

}  // namespace sorakaze::gateway
