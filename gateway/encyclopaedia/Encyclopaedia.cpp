// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/Encyclopaedia.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/PercentCoding.h"
#include "gateway/encyclopaedia/Article.h"
#include "gateway/encyclopaedia/Names.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kMostCached = 64;
/// As good as the whole run.
constexpr std::chrono::hours kCacheFound{24 * 365};
constexpr std::chrono::minutes kCacheNotFound{60};

/// What a title has in brackets to tell a musician or a band from others of the name. A site takes fifty
/// titles at once.
constexpr std::string_view kEnglishQualifiers[] = {"band",
                                                   "musician",
                                                   "singer",
                                                   "rapper",
                                                   "group",
                                                   "duo",
                                                   "musical group",
                                                   "DJ",
                                                   "musical duo",
                                                   "composer",
                                                   "guitarist",
                                                   "music producer",
                                                   "pianist",
                                                   "drummer",
                                                   "record producer",
                                                   "singer-songwriter",
                                                   "British rapper",
                                                   "American rapper",
                                                   "South Korean group",
                                                   "Japanese group"};
constexpr std::string_view kEnglishOrigins[] = {"American", "British", "English", "Canadian", "Australian",
                                                "French",   "German",  "Swedish", "Japanese"};
constexpr std::string_view kQualifiersWithOrigin[] = {"band", "singer", "musician"};
constexpr std::string_view kJapaneseQualifiers[] = {
    "バンド",   "歌手",         "ミュージシャン",         "音楽グループ",     "音楽家",
    "ラッパー", "音楽ユニット", "シンガーソングライター", "アイドルグループ", "作曲家",
    "DJ",       "グループ"};

constexpr std::size_t kMostQualifiedBytes = 80;

std::vector<std::string> QualifiedTitles(std::string_view name, Edition edition) {
    std::vector<std::string> titles;
    const auto add = [&](std::string_view qualifier) {
        titles.push_back(std::string(name) + " (" + std::string(qualifier) + ')');
    };
    if (name.size() > kMostQualifiedBytes) return titles;
    if (edition == Edition::Japanese) {
        std::ranges::for_each(kJapaneseQualifiers, add);
        return titles;
    }
    std::ranges::for_each(kEnglishQualifiers, add);
    for (const std::string_view origin : kEnglishOrigins) {
        for (const std::string_view what : kQualifiersWithOrigin)
            add(std::string(origin) + ' ' + std::string(what));
    }
    return titles;
}

std::string RenderPage(std::string_view name, std::string_view summary, Edition edition) {
    // The page's reader removes tags and decodes nothing: an ampersand is left as it is, and what looks like
    // a tag can't be. The announcer's words go through a shell.
    const auto text = [](std::string_view from) {
        std::string plain(from);
        std::erase_if(plain,
                      [](char c) { return std::string_view("<>`$\\").find(c) != std::string_view::npos; });
        return plain;
    };
    return std::string("<!DOCTYPE html>\n<html lang=\"") + (edition == Edition::Japanese ? "ja" : "en") +
           "\">\n<head><meta charset=\"utf-8\"></head>\n<body>\n<p><b>" + text(name) + "</b>" +
           text(summary) + "</p>\n<a href=\"/wiki/Music_genre\">Music</a>\n</body>\n</html>\n";
}

}  // namespace

/// One search: its queries to the site, and the decisions on the answers.
class Encyclopaedia::SearchRun {
  public:
    SearchRun(SiteClient& client, const std::string& site, const Search& search)
        : session_(client), site_(site), search_(search) {}

    std::optional<Found> Run() {
        const auto nearest = Candidates(NearMatchQuery(search_.name));
        if (nearest.empty()) return {};
        if (auto found = ReadIfMusician(nearest.front())) return found;
        return FindNamesake(nearest.front());
    }

    /// False if a query had no answer.
    bool WasAnswered() const { return wasAnswered_; }
    /// Of the first of these.
    const std::string& Failure() const { return failure_; }

  private:
    std::optional<std::string> Ask(const std::string& query, std::size_t mostBytes) {
        auto answer = session_.Get(site_, query, mostBytes);
        if (!answer && wasAnswered_) failure_ = session_.Failure();
        wasAnswered_ = wasAnswered_ && answer.has_value();
        return answer;
    }

    std::vector<Candidate> Candidates(const std::string& query) {
        const auto answer = Ask(query, kMostCandidateBytes);
        return answer ? ReadCandidates(*answer) : std::vector<Candidate>();
    }

    bool HasSearchedName(std::string_view title) const {
        return SameName(WithoutQualifier(title), search_.name);
    }

    bool IsInMusicianCategory(const Candidate& candidate) const {
        return std::ranges::any_of(candidate.categories, [&](const std::string& category) {
            return IsMusicianCategory(category, search_.edition);
        });
    }

    /// Many names redirect to an article that mentions them: a player's to the band's, a song's to its
    /// singer's. The name is the subject's own if it is the title, or if the article gives it as one.
    bool IsSubjectsName(const Candidate& candidate, const Article& article) const {
        if (HasSearchedName(candidate.title) || SameName(candidate.title, search_.name)) return true;
        return !candidate.redirectedToSection &&
               std::ranges::any_of(article.names,
                                   [&](const std::string& name) { return SameName(name, search_.name); });
    }

    std::optional<Found> ReadIfMusician(const Candidate& candidate) {
        if (candidate.isDisambiguation) return {};
        const auto answer = Ask(LeadSectionQuery(candidate.title), std::string::npos);
        const auto markup = answer ? ReadLeadSection(*answer) : std::nullopt;
        if (!markup) return {};
        const Article article = ReadArticle(*markup, candidate.title, search_.edition);
        const bool isMusician = article.subject == SubjectKind::Musician ||
                                (article.subject == SubjectKind::Unknown && IsInMusicianCategory(candidate));
        if (article.isDisambiguation || !isMusician || article.summary.empty() ||
            !IsSubjectsName(candidate, article)) {
            return {};
        }
        return Found{candidate.title,
                     RenderPage(WithoutQualifier(candidate.title), article.summary, search_.edition)};
    }

    /// For a name with several subjects, where the nearest article isn't a musician's. Found if just one
    /// musician has the name.
    std::optional<Found> FindNamesake(const Candidate& nearest) {
        if (!wasAnswered_) return {};
        const std::string& title = nearest.redirectedFrom.empty() ? nearest.title : nearest.redirectedFrom;
        if (!HasSearchedName(title)) return {};
        const std::vector<std::string> titles = QualifiedTitles(WithoutQualifier(title), search_.edition);
        if (titles.empty()) return {};
        auto candidates = Candidates(TitlesQuery(titles));
        std::erase_if(candidates, [&](const Candidate& candidate) {
            return candidate.isDisambiguation || candidate.redirectedToSection ||
                   candidate.title == nearest.title || !HasSearchedName(candidate.title) ||
                   !IsInMusicianCategory(candidate);
        });
        if (candidates.size() != 1) return {};
        return ReadIfMusician(candidates.front());
    }

    SiteClient::Session session_;
    const std::string& site_;
    const Search& search_;
    bool wasAnswered_ = true;
    std::string failure_;
};

Encyclopaedia::Encyclopaedia(std::string englishSite, std::string japaneseSite, SiteLimits limits,
                             Clock clock)
    : englishSite_(std::move(englishSite)),
      japaneseSite_(std::move(japaneseSite)),
      clock_(clock),
      client_(std::move(limits), clock) {}

Encyclopaedia::Finding Encyclopaedia::Find(const Search& search) {
    const std::string& site = SiteOf(search.edition);
    if (site.empty()) return {};
    const auto finding = [&](const std::optional<Found>& found) {
        return found ? Finding{ArticleAddress{search.edition, found->title}, {}} : Finding();
    };
    {
        const std::lock_guard lock(mutex_);
        if (const CacheEntry* entry = FindCached(search)) return finding(entry->found);
    }
    SearchRun run(client_, site, search);
    auto found = run.Run();
    // A query without an answer may have one for the next song.
    if (!found && !run.WasAnswered()) return {std::nullopt, run.Failure()};
    const std::chrono::minutes keep = found ? kCacheFound : kCacheNotFound;
    auto result = finding(found);
    const std::lock_guard lock(mutex_);
    Store({search, std::move(found), clock_() + keep});
    return result;
}

ServiceAnswer Encyclopaedia::Answer(const ServiceRequest& request) {
    ServiceAnswer answer;
    if (const auto search = ParseSearch(request.target)) {
        const Finding found = Find(*search);
        if (found.article) {
            answer.status = 302;
            answer.location = ArticleTarget(*found.article);
        }
        answer.failure = found.failure;
    } else if (const auto article = ParseArticleAddress(request.target)) {
        if (auto page = Page(*article)) {
            answer = {200, "text/html; charset=utf-8", std::move(*page), {}, CreditOf(*article)};
        }
    }
    return answer;
}

std::map<std::string, std::string> Encyclopaedia::CreditOf(const ArticleAddress& article) const {
    std::string path = article.title;
    std::ranges::replace(path, ' ', '_');
    return {{"Source-Title", article.title},
            {"Source-Address", SiteOf(article.edition) + "/wiki/" + PercentEncoded(path, "-._~/:,!()*'@;")},
            {"Source-Licence", "CC BY-SA 4.0"}};
}

std::optional<std::string> Encyclopaedia::Page(const ArticleAddress& address) {
    const std::lock_guard lock(mutex_);
    for (const CacheEntry& entry : cache_) {
        if (entry.found && entry.search.edition == address.edition && entry.found->title == address.title) {
            return entry.found->page;
        }
    }
    return {};
}

const Encyclopaedia::CacheEntry* Encyclopaedia::FindCached(const Search& search) {
    const auto now = clock_();
    const auto entry = std::ranges::find_if(cache_, [&](const CacheEntry& e) {
        return e.search.edition == search.edition && e.search.name == search.name && now < e.until;
    });
    if (entry == cache_.end()) return nullptr;
    cache_.splice(cache_.begin(), cache_, entry);
    return &cache_.front();
}

void Encyclopaedia::Store(CacheEntry entry) {
    std::erase_if(cache_, [&](const CacheEntry& e) {
        return e.search.edition == entry.search.edition && e.search.name == entry.search.name;
    });
    cache_.push_front(std::move(entry));
    if (cache_.size() > kMostCached) cache_.pop_back();
}

}  // namespace sorakaze::gateway
