// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The questions that are put to the encyclopaedia's site, and its answers, which are JSON. Three are enough:
// whose article has nearly this title; which of these titles exist; how does this article begin. The first
// two give the categories along, and the last leaves out all but the part that is read, so that most artists
// cost two requests and a few tens of kilobytes.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::gateway {

struct Candidate {
    std::string title;
    /// The title that was found first, where the site leads from it to `title`; else empty.
    std::string redirectedFrom;
    bool redirectedToSection = false;
    bool disambiguates = false;
    std::vector<std::string> categories;  ///< without namespace and without hidden ones
};

/// The site's own "go to the page" of its search: letter case and accents don't count, and its redirects are
/// followed.
std::string NearMatchQuestion(std::string_view name);
std::string TitlesQuestion(std::span<const std::string> titles);
/// What the site may answer to the two; 500 categories take a tenth of it.
inline constexpr std::size_t kLongestCandidates = 512u << 10;
/// Articles alone, in the site's order. Empty if the answer can't be read.
std::vector<Candidate> ReadCandidates(std::string_view json);

std::string BeginningQuestion(std::string_view title);
/// The markup.
std::optional<std::string> ReadBeginning(std::string_view json);

}  // namespace sorakaze::gateway
