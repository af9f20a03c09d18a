// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/ArticleSearch.h"

#include <algorithm>

#include "gateway/encyclopaedia/Names.h"
#include "gateway/encyclopaedia/Namesakes.h"
#include "gateway/encyclopaedia/ShortNames.h"

namespace sorakaze::gateway {

ArticleSearch::ArticleSearch(SiteClient& client, const std::string& site, const Search& search)
    : session_(client), site_(site), edition_(search.edition), name_(search.name) {}

std::optional<FoundArticle> ArticleSearch::Run() {
    const auto nearest = FindNearest();
    if (!nearest) return {};
    if (auto found = ReadIfMusician(*nearest)) return found;
    return FindNamesake(*nearest);
}

std::optional<std::string> ArticleSearch::Ask(const std::string& query, std::size_t mostBytes) {
    auto answer = session_.Get(site_, query, mostBytes);
    if (!answer && wasAnswered_) failure_ = session_.Failure();
    wasAnswered_ = wasAnswered_ && answer.has_value();
    return answer;
}

std::vector<Candidate> ArticleSearch::Candidates(const std::string& query) {
    const auto answer = Ask(query, kMostCandidateBytes);
    return answer ? ReadCandidates(*answer) : std::vector<Candidate>();
}

std::optional<Candidate> ArticleSearch::FindNearest() {
    for (std::string& spelling : Spellings(name_)) {
        auto nearest = Candidates(NearMatchQuery(spelling));
        if (!wasAnswered_) break;
        if (nearest.empty()) continue;
        name_ = std::move(spelling);
        return std::move(nearest.front());
    }
    return {};
}

bool ArticleSearch::HasSearchedName(std::string_view title) const {
    return SameName(WithoutQualifier(title), name_) || SameName(title, name_);
}

/// Many names redirect to an article that mentions them: a player's to the band's, a song's to its singer's.
/// The name is the subject's own if it is the title or short for it, or if the article gives it as one.
bool ArticleSearch::IsSubjectsName(const Candidate& candidate, const Article& article) const {
    if (HasSearchedName(candidate.title)) return true;
    if (candidate.redirectedToSection) return false;
    const bool isPerson = std::ranges::any_of(candidate.categories, [&](const std::string& category) {
        return IsPersonCategory(category, edition_);
    });
    if (IsShortFor(name_, WithoutQualifier(candidate.title), isPerson ? Bearer::Person : Bearer::Group))
        return true;
    return std::ranges::any_of(article.names, [&](const std::string& name) { return SameName(name, name_); });
}

std::optional<FoundArticle> ArticleSearch::ReadIfMusician(const Candidate& candidate) {
    if (candidate.isDisambiguation) return {};
    const auto answer = Ask(LeadSectionQuery(candidate.title), std::string::npos);
    const auto markup = answer ? ReadLeadSection(*answer) : std::nullopt;
    if (!markup) return {};
    Article article = ReadArticle(*markup, candidate.title, edition_);
    const bool isMusician = article.subject == SubjectKind::Musician ||
                            (article.subject == SubjectKind::Unknown && IsMusician(candidate, edition_));
    if (article.isDisambiguation || !isMusician || article.summary.empty() ||
        !IsSubjectsName(candidate, article)) {
        return {};
    }
    return FoundArticle{candidate.title, std::string(WithoutQualifier(candidate.title)),
                        std::move(article.summary)};
}

/// For a name with several subjects, where the nearest article isn't a musician's.
std::optional<FoundArticle> ArticleSearch::FindNamesake(const Candidate& nearest) {
    if (!wasAnswered_) return {};
    const std::string& title = HasSearchedName(nearest.title) ? nearest.title : nearest.redirectedFrom;
    if (title.empty() || !HasSearchedName(title)) return {};
    const std::string base(WithoutQualifier(title));
    const std::string list =
        nearest.isDisambiguation
            ? nearest.title
            : base + (edition_ == Edition::Japanese ? " (曖昧さ回避)" : " (disambiguation)");
    const auto listed = Ask(NamesakesQuery(list, base), kMostCandidateBytes);
    if (!listed) return {};
    auto titles = TitlesOfBearers(ReadNamesakes(*listed), name_, edition_);
    std::erase(titles, nearest.title);
    if (titles.empty()) return {};
    auto bearers = Candidates(TitlesQuery(titles));
    std::erase_if(bearers, [&](const Candidate& bearer) {
        return bearer.isDisambiguation || bearer.redirectedToSection || bearer.title == nearest.title ||
               !IsMusician(bearer, edition_);
    });
    const Candidate* best = wasAnswered_ ? BestKnown(bearers) : nullptr;
    return best ? ReadIfMusician(*best) : std::nullopt;
}

}  // namespace sorakaze::gateway
