// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/Encyclopaedia.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "gateway/Article.h"
#include "gateway/Names.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kRemembered = 64;
constexpr std::chrono::hours kForTheRun{24 * 365};
/// What isn't in the encyclopaedia now won't be within the hour.
constexpr std::chrono::minutes kAbsent{60};

/// What tells a musician or a band from others of the same name. A site takes fifty titles at once.
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
constexpr std::string_view kFromThere[] = {"band", "singer", "musician"};
constexpr std::string_view kJapaneseQualifiers[] = {
    "バンド",   "歌手",         "ミュージシャン",         "音楽グループ",     "音楽家",
    "ラッパー", "音楽ユニット", "シンガーソングライター", "アイドルグループ", "作曲家",
    "DJ",       "グループ"};

constexpr std::size_t kLongestQualified = 80;

std::vector<std::string> Qualified(std::string_view name, Edition edition) {
    std::vector<std::string> titles;
    const auto add = [&](std::string_view qualifier) {
        titles.push_back(std::string(name) + " (" + std::string(qualifier) + ')');
    };
    if (name.size() > kLongestQualified) return titles;
    if (edition == Edition::Japanese) {
        std::ranges::for_each(kJapaneseQualifiers, add);
        return titles;
    }
    std::ranges::for_each(kEnglishQualifiers, add);
    for (const std::string_view origin : kEnglishOrigins) {
        for (const std::string_view what : kFromThere) add(std::string(origin) + ' ' + std::string(what));
    }
    return titles;
}

std::string PageOf(std::string_view name, std::string_view told, Edition edition) {
    // The reader of this page takes tags out and decodes nothing: an ampersand stands for itself, and what
    // would look like a tag can't stay. What is told goes through a shell on its way to the announcer.
    const auto text = [](std::string_view from) {
        std::string plain(from);
        std::erase_if(plain,
                      [](char c) { return std::string_view("<>`$\\").find(c) != std::string_view::npos; });
        return plain;
    };
    return std::string("<!DOCTYPE html>\n<html lang=\"") + (edition == Edition::Japanese ? "ja" : "en") +
           "\">\n<head><meta charset=\"utf-8\"></head>\n<body>\n<p><b>" + text(name) + "</b>" + text(told) +
           "</p>\n<a href=\"/wiki/Music_genre\">Music</a>\n</body>\n</html>\n";
}

}  // namespace

/// One search: its questions to the site and what becomes of their answers.
class Encyclopaedia::Inquiry {
  public:
    Inquiry(SiteClient& client, const std::string& site, const Search& search)
        : session_(client), site_(site), search_(search) {}

    std::optional<Found> Run() {
        const auto nearest = Candidates(NearMatchQuestion(search_.name));
        if (nearest.empty()) return {};
        if (auto found = Tell(nearest.front())) return found;
        return AnotherOfThatName(nearest.front());
    }

    /// False if some question had no answer.
    bool Answered() const { return answered_; }

  private:
    std::optional<std::string> Ask(const std::string& question, std::size_t longest) {
        auto answer = session_.Get(site_, question, longest);
        answered_ = answered_ && answer.has_value();
        return answer;
    }

    std::vector<Candidate> Candidates(const std::string& question) {
        const auto answer = Ask(question, kLongestCandidates);
        return answer ? ReadCandidates(*answer) : std::vector<Candidate>();
    }

    bool IsOfThatName(std::string_view title) const {
        return SameName(WithoutQualifier(title), search_.name);
    }

    bool InCategoryOfMusicians(const Candidate& candidate) const {
        return std::ranges::any_of(candidate.categories, [&](const std::string& category) {
            return IsOfMusicians(category, search_.edition);
        });
    }

    /// The site leads from many names to the article that has something on them: from a player to the band,
    /// from a song to its singer. It is the subject's own name if the article gives it as one.
    bool IsTrusted(const Candidate& candidate, const Article& article) const {
        if (IsOfThatName(candidate.title) || SameName(candidate.title, search_.name)) return true;
        return !candidate.redirectedToSection &&
               std::ranges::any_of(article.names,
                                   [&](const std::string& name) { return SameName(name, search_.name); });
    }

    std::optional<Found> Tell(const Candidate& candidate) {
        if (candidate.disambiguates) return {};
        const auto answer = Ask(BeginningQuestion(candidate.title), std::string::npos);
        const auto markup = answer ? ReadBeginning(*answer) : std::nullopt;
        if (!markup) return {};
        const Article article = ReadArticle(*markup, candidate.title, search_.edition);
        const bool isMusician = article.box == BoxSays::Musician ||
                                (article.box == BoxSays::Nothing && InCategoryOfMusicians(candidate));
        if (article.disambiguates || !isMusician || article.told.empty() || !IsTrusted(candidate, article)) {
            return {};
        }
        return Found{candidate.title,
                     PageOf(WithoutQualifier(candidate.title), article.told, search_.edition)};
    }

    /// The name may be more than one subject's, and the nearest article another one's. If it is one
    /// musician's and no more, it is that one's.
    std::optional<Found> AnotherOfThatName(const Candidate& nearest) {
        if (!answered_) return {};
        const std::string& title = nearest.redirectedFrom.empty() ? nearest.title : nearest.redirectedFrom;
        if (!IsOfThatName(title)) return {};
        const std::vector<std::string> titles = Qualified(WithoutQualifier(title), search_.edition);
        if (titles.empty()) return {};
        auto candidates = Candidates(TitlesQuestion(titles));
        std::erase_if(candidates, [&](const Candidate& candidate) {
            return candidate.disambiguates || candidate.redirectedToSection ||
                   candidate.title == nearest.title || !IsOfThatName(candidate.title) ||
                   !InCategoryOfMusicians(candidate);
        });
        if (candidates.size() != 1) return {};
        return Tell(candidates.front());
    }

    SiteClient::Session session_;
    const std::string& site_;
    const Search& search_;
    bool answered_ = true;
};

Encyclopaedia::Encyclopaedia(std::string englishSite, std::string japaneseSite, SiteLimits limits,
                             Clock clock)
    : englishSite_(std::move(englishSite)),
      japaneseSite_(std::move(japaneseSite)),
      clock_(clock),
      client_(std::move(limits), clock) {}

std::optional<ArticleAddress> Encyclopaedia::Find(const Search& search) {
    const std::string& site = search.edition == Edition::Japanese ? japaneseSite_ : englishSite_;
    if (site.empty()) return {};
    const auto address = [&](const std::optional<Found>& found) {
        return found ? std::optional(ArticleAddress{search.edition, found->title}) : std::nullopt;
    };
    {
        const std::lock_guard lock(mutex_);
        if (const Entry* entry = Remembered(search)) return address(entry->found);
    }
    Inquiry inquiry(client_, site, search);
    auto found = inquiry.Run();
    // What wasn't answered may be for the next song.
    if (!found && !inquiry.Answered()) return {};
    const std::chrono::minutes keep = found ? kForTheRun : kAbsent;
    const auto result = address(found);
    const std::lock_guard lock(mutex_);
    Remember({search, std::move(found), clock_() + keep});
    return result;
}

std::optional<std::string> Encyclopaedia::Page(const ArticleAddress& address) {
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : entries_) {
        if (entry.found && entry.search.edition == address.edition && entry.found->title == address.title) {
            return entry.found->page;
        }
    }
    return {};
}

const Encyclopaedia::Entry* Encyclopaedia::Remembered(const Search& search) {
    const auto now = clock_();
    const auto entry = std::ranges::find_if(entries_, [&](const Entry& e) {
        return e.search.edition == search.edition && e.search.name == search.name && now < e.until;
    });
    if (entry == entries_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, entry);
    return &entries_.front();
}

void Encyclopaedia::Remember(Entry entry) {
    std::erase_if(entries_, [&](const Entry& e) {
        return e.search.edition == entry.search.edition && e.search.name == entry.search.name;
    });
    entries_.push_front(std::move(entry));
    if (entries_.size() > kRemembered) entries_.pop_back();
}

}  // namespace sorakaze::gateway
