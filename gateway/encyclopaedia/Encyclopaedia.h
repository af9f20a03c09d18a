// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The encyclopaedia's service: finds the article about a musician or a band of some name, and serves a page
// with its beginning. To announce the wrong person is worse than to say nothing, so an uncertain find is
// none.
#pragma once

#include <chrono>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "gateway/encyclopaedia/SearchTarget.h"
#include "gateway/encyclopaedia/SiteApi.h"
#include "gateway/encyclopaedia/SiteClient.h"
#include "gateway/server/ServiceMessages.h"

namespace sorakaze::gateway {

/// Called from any thread, several at a time.
class Encyclopaedia {
  public:
    /// A site is a scheme and a host; empty for an edition that isn't available.
    Encyclopaedia(std::string englishSite, std::string japaneseSite, SiteLimits limits,
                  Clock clock = &std::chrono::steady_clock::now, Sleep sleep = &SleepFor);

    /// A search is answered with a redirect to the article's page, and an article's target with that page;
    /// anything else, and what isn't found, with a 404. A page comes with the headers Source-Title,
    /// Source-Address and Source-Licence, to credit its text.
    ServiceAnswer Answer(const ServiceRequest& request);

    struct Finding {
        std::optional<ArticleAddress> article;
        /// Why the site gave no answer; empty if it did, and if there is no site to ask.
        std::string failure;
    };
    /// The address of the article about `search.name`. Blocks while the sites are asked, within the limits.
    Finding Find(const Search& search);
    /// The page of an article that Find has found: the article's beginning as one paragraph, with the
    /// subject's name in bold, and the link by which the client recognises a musician.
    std::optional<std::string> Page(const ArticleAddress& address);

    /// Ends every search that is under way; later ones find nothing.
    void Stop() { client_.Stop(); }

  private:
    struct Found {
        std::string title;
        std::string page;
    };
    struct CacheEntry {
        Search search;
        std::optional<Found> found;
        std::chrono::steady_clock::time_point until;
    };

    const std::string& SiteOf(Edition edition) const {
        return edition == Edition::Japanese ? japaneseSite_ : englishSite_;
    }
    std::map<std::string, std::string> CreditOf(const ArticleAddress& article) const;

    /// For the mutex's holder, both.
    const CacheEntry* FindCached(const Search& search);
    void Store(CacheEntry entry);

    const std::string englishSite_;
    const std::string japaneseSite_;
    const Clock clock_;
    SiteClient client_;
    std::mutex mutex_;             ///< guards `cache_`
    std::list<CacheEntry> cache_;  ///< last used first
};

}  // namespace sorakaze::gateway
