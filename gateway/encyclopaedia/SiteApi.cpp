// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/SiteApi.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>

#include "base/PercentCoding.h"
#include "gateway/encyclopaedia/SearchTarget.h"

namespace sorakaze::gateway {
namespace {

using Json = nlohmann::json;

/// More than are asked for at once.
constexpr std::size_t kMostPages = 64;
constexpr std::size_t kMostRedirects = 4 * kMostPages;
constexpr int kMostChainedRedirects = 4;

constexpr std::string_view kQuery =
    "/w/api.php?action=query&format=json&formatversion=2&redirects=1&prop=pageprops%7Ccategories%7Cinfo"
    "&ppprop=disambiguation&clshow=%21hidden&cllimit=max";

/// The member, or null where there is none or `object` is none.
const Json& Member(const Json& object, const char* name) {
    static const Json null;
    if (!object.is_object()) return null;
    const auto found = object.find(name);
    return found == object.end() ? null : *found;
}

std::string Text(const Json& value) {
    return value.is_string() ? value.get<std::string>() : std::string();
}

std::int64_t Number(const Json& value, std::int64_t otherwise) {
    return value.is_number_integer() ? value.get<std::int64_t>() : otherwise;
}

Candidate ReadPage(const Json& page) {
    Candidate candidate;
    candidate.title = Text(Member(page, "title"));
    candidate.length = static_cast<std::size_t>(std::max<std::int64_t>(Number(Member(page, "length"), 0), 0));
    candidate.isDisambiguation = Member(page, "pageprops").contains("disambiguation");
    for (const Json& category : Member(page, "categories")) {
        const std::string title = Text(Member(category, "title"));
        candidate.categories.push_back(title.substr(title.find(':') + 1));
    }
    return candidate;
}

using Redirects = std::unordered_map<std::string, const Json*>;

/// By their targets.
Redirects ReadRedirects(const Json& list) {
    Redirects redirects;
    for (const Json& redirect : list) {
        if (redirects.size() >= kMostRedirects) break;
        redirects.try_emplace(Text(Member(redirect, "to")), &redirect);
    }
    return redirects;
}

/// The site lists a chain of redirects one by one.
void ApplyRedirects(const Redirects& redirects, Candidate& candidate) {
    std::string to = candidate.title;
    for (int link = 0; link < kMostChainedRedirects; ++link) {
        const auto found = redirects.find(to);
        if (found == redirects.end()) return;
        const Json& redirect = *found->second;
        candidate.redirectedFrom = Text(Member(redirect, "from"));
        candidate.redirectedToSection |= !Member(redirect, "tofragment").is_null();
        to = candidate.redirectedFrom;
    }
}

}  // namespace

std::string NearMatchQuery(std::string_view name) {
    return std::string(kQuery) +
           "&generator=search&gsrwhat=nearmatch&gsrlimit=1&gsrsearch=" + PercentEncoded(name);
}

std::string TitlesQuery(std::span<const std::string> titles) {
    std::string query = std::string(kQuery) + "&titles=";
    for (const std::string& title : titles) {
        if (&title != titles.data()) query += "%7C";
        query += PercentEncoded(title);
    }
    return query;
}

std::vector<Candidate> ReadCandidates(std::string_view json) {
    if (json.size() > kMostCandidateBytes) return {};
    const Json answer = Json::parse(json, nullptr, false);
    const Json& query = Member(answer, "query");
    const Redirects redirects = ReadRedirects(Member(query, "redirects"));
    std::vector<Candidate> candidates;
    for (const Json& page : Member(query, "pages")) {
        if (candidates.size() >= kMostPages) break;
        if (Number(Member(page, "ns"), -1) != 0 || !Member(page, "missing").is_null()) continue;
        Candidate candidate = ReadPage(page);
        if (candidate.title.empty()) continue;
        ApplyRedirects(redirects, candidate);
        candidates.push_back(std::move(candidate));
    }
    return candidates;
}

std::string NamesakesQuery(std::string_view disambiguation, std::string_view name) {
    return "/w/api.php?action=query&format=json&formatversion=2&redirects=1&prop=links%7Cpageprops"
           "&ppprop=disambiguation&plnamespace=0&pllimit=max&list=allpages&apnamespace=0&aplimit=max"
           "&titles=" +
           PercentEncoded(disambiguation) + "&apprefix=" + PercentEncoded(std::string(name) + " (");
}

std::vector<std::string> ReadNamesakes(std::string_view json) {
    if (json.size() > kMostCandidateBytes) return {};
    const Json answer = Json::parse(json, nullptr, false);
    const Json& query = Member(answer, "query");
    std::vector<std::string> titles;
    const auto add = [&](const Json& list) {
        for (const Json& page : list) {
            std::string title = Text(Member(page, "title"));
            if (!title.empty() && Number(Member(page, "ns"), -1) == 0) titles.push_back(std::move(title));
        }
    };
    add(Member(query, "allpages"));
    for (const Json& page : Member(query, "pages"))
        if (Member(page, "pageprops").contains("disambiguation")) add(Member(page, "links"));
    std::ranges::sort(titles);
    titles.erase(std::unique(titles.begin(), titles.end()), titles.end());
    return titles;
}

std::string LeadSectionQuery(std::string_view title) {
    return "/w/api.php?action=parse&format=json&formatversion=2&prop=text&section=0&disablelimitreport=1"
           "&disableeditsection=1&disabletoc=1&page=" +
           PercentEncoded(title);
}

std::optional<std::string> ReadLeadSection(std::string_view json) {
    // Deeper values are dropped: they would take many times their length.
    const auto keep = [](int depth, Json::parse_event_t, Json&) { return depth <= 2; };
    const Json answer = Json::parse(json, keep, false);
    const Json& text = Member(Member(answer, "parse"), "text");
    if (!text.is_string()) return {};
    return text.get<std::string>();
}

std::string ReadError(std::string_view json) {
    // Deeper values are dropped: they would take many times their length.
    const auto keep = [](int depth, Json::parse_event_t, Json&) { return depth <= 2; };
    const Json answer = Json::parse(json, keep, false);
    const Json& error = Member(answer, "error");
    if (error.is_null()) return {};
    const std::string code = Text(Member(error, "code"));
    return code.empty() ? "unknown" : code;
}

bool IsNoSuchArticle(std::string_view errorCode) {
    return errorCode == "missingtitle" || errorCode == "invalidtitle" || errorCode == "nosuchsection" ||
           errorCode == "pagecannotexist";
}

}  // namespace sorakaze::gateway
