// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/SiteAnswers.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "gateway/SearchTarget.h"

namespace sorakaze::gateway {
namespace {

using Json = nlohmann::json;

constexpr std::string_view kQuery =
    "/w/api.php?action=query&format=json&formatversion=2&redirects=1&prop=pageprops%7Ccategories"
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
    candidate.disambiguates = Member(page, "pageprops").contains("disambiguation");
    for (const Json& category : Member(page, "categories")) {
        const std::string title = Text(Member(category, "title"));
        candidate.categories.push_back(title.substr(title.find(':') + 1));
    }
    return candidate;
}

/// A chain of redirects is told link by link.
void TakeRedirects(const Json& redirects, Candidate& candidate) {
    std::string to = candidate.title;
    for (std::size_t link = 0; link < redirects.size(); ++link) {
        const auto found =
            std::ranges::find_if(redirects, [&](const Json& r) { return Text(Member(r, "to")) == to; });
        if (found == redirects.end()) return;
        candidate.redirectedFrom = Text(Member(*found, "from"));
        candidate.redirectedToSection |= !Member(*found, "tofragment").is_null();
        to = candidate.redirectedFrom;
    }
}

}  // namespace

std::string NearMatchQuestion(std::string_view name) {
    return std::string(kQuery) +
           "&generator=search&gsrwhat=nearmatch&gsrlimit=1&gsrsearch=" + PercentEncoded(name);
}

std::string TitlesQuestion(std::span<const std::string> titles) {
    std::string question = std::string(kQuery) + "&titles=";
    for (const std::string& title : titles) {
        if (&title != titles.data()) question += "%7C";
        question += PercentEncoded(title);
    }
    return question;
}

std::vector<Candidate> ReadCandidates(std::string_view json) {
    const Json answer = Json::parse(json, nullptr, false);
    const Json& query = Member(answer, "query");
    std::vector<Candidate> candidates;
    for (const Json& page : Member(query, "pages")) {
        if (Number(Member(page, "ns"), -1) != 0 || !Member(page, "missing").is_null()) continue;
        Candidate candidate = ReadPage(page);
        if (candidate.title.empty()) continue;
        TakeRedirects(Member(query, "redirects"), candidate);
        candidates.push_back(std::move(candidate));
    }
    return candidates;
}

std::string BeginningQuestion(std::string_view title) {
    return "/w/api.php?action=parse&format=json&formatversion=2&prop=text&section=0&disablelimitreport=1"
           "&disableeditsection=1&disabletoc=1&page=" +
           PercentEncoded(title);
}

std::optional<std::string> ReadBeginning(std::string_view json) {
    const Json answer = Json::parse(json, nullptr, false);
    const Json& text = Member(Member(answer, "parse"), "text");
    if (!text.is_string()) return {};
    return text.get<std::string>();
}

}  // namespace sorakaze::gateway
