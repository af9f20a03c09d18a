// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The queries that are sent to the encyclopaedia's site, as targets of requests, and its answers in JSON.
// There are four: the article whose title is nearest to a name, the titles of the name's other subjects, the
// articles with given titles, and an article's beginning. The first and third also give categories, so that
// most artists take two requests and a few tens of kilobytes. Pure functions of foreign bytes; any thread.
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
    /// The title that the site redirected from; empty without a redirect.
    std::string redirectedFrom;
    bool redirectedToSection = false;
    bool isDisambiguation = false;        ///< lists articles of one name
    std::size_t length = 0;               ///< bytes of its source
    std::vector<std::string> categories;  ///< without namespace and without hidden ones
};

/// The site matches as its own search field does: it ignores letter case and accents, and follows redirects.
std::string NearMatchQuery(std::string_view name);
std::string TitlesQuery(std::span<const std::string> titles);
/// Bytes of an answer to these two; 500 categories take a tenth of it.
inline constexpr std::size_t kMostCandidateBytes = 512u << 10;
/// Only articles, in the site's order. Empty if the answer can't be read.
std::vector<Candidate> ReadCandidates(std::string_view json);

/// The titles that the disambiguation page lists, and those that begin with `name` and a bracket.
std::string NamesakesQuery(std::string_view disambiguation, std::string_view name);
/// Redirects among them. Empty if the answer can't be read.
std::vector<std::string> ReadNamesakes(std::string_view json);

std::string LeadSectionQuery(std::string_view title);
/// The markup of the article before its first heading. Nullopt if the answer can't be read.
std::optional<std::string> ReadLeadSection(std::string_view json);

/// The code of the error that the answer consists of; empty if it is none, and for an answer that can't be
/// read.
std::string ReadError(std::string_view json);
/// Whether the error with this code means that there is no such article.
bool IsNoSuchArticle(std::string_view errorCode);

}  // namespace sorakaze::gateway
