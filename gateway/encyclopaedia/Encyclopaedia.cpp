// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/Encyclopaedia.h"

#include <algorithm>
#include <utility>

#include "base/PercentCoding.h"
#include "gateway/encyclopaedia/ArticleSearch.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kMostCached = 1000;
/// As good as the whole run.
constexpr std::chrono::hours kCacheFound{24 * 365};
constexpr std::chrono::minutes kCacheNotFound{60};

std::string RenderPage(const FoundArticle& article, Edition edition) {
    // The page's reader removes tags and decodes nothing: an ampersand is left as it is, and what looks like
    // a tag can't be. The announcer's words go through a shell.
    const auto text = [](std::string_view from) {
        std::string plain(from);
        std::erase_if(plain,
                      [](char c) { return std::string_view("<>`$\\").find(c) != std::string_view::npos; });
        return plain;
    };
    return std::string("<!DOCTYPE html>\n<html lang=\"") + (edition == Edition::Japanese ? "ja" : "en") +
           "\">\n<head><meta charset=\"utf-8\"></head>\n<body>\n<p><b>" + text(article.name) + "</b>" +
           text(article.summary) + "</p>\n<a href=\"/wiki/Music_genre\">Music</a>\n</body>\n</html>\n";
}

}  // namespace

Encyclopaedia::Encyclopaedia(std::string englishSite, std::string japaneseSite, SiteLimits limits,
                             Clock clock, Sleep sleep)
    : englishSite_(std::move(englishSite)),
      japaneseSite_(std::move(japaneseSite)),
      clock_(clock),
      client_(std::move(limits), clock, std::move(sleep)) {}

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
    ArticleSearch run(client_, site, search);
    std::optional<Found> found;
    if (const auto article = run.Run()) found = Found{article->title, RenderPage(*article, search.edition)};
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
