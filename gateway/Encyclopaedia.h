// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Finds the article about a musician or a band of some name, and keeps what is told of it for the run. The
// wrong person is worse than silence: what isn't certain is no find.
#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "gateway/SearchTarget.h"
#include "gateway/SiteAnswers.h"
#include "gateway/SiteClient.h"

namespace sorakaze::gateway {

class Encyclopaedia {
  public:
    /// A site is a scheme and a host; empty for an edition that isn't to be had.
    Encyclopaedia(std::string englishSite, std::string japaneseSite, SiteLimits limits,
                  Clock clock = &std::chrono::steady_clock::now);

    /// The address of the article about `search.name`. Takes as long as the sites take, within the limits.
    std::optional<ArticleAddress> Find(const Search& search);
    /// The page that tells of an article that was found: its lead as one paragraph that begins with the
    /// subject's name in bold, and the link that tells a musician.
    std::optional<std::string> Page(const ArticleAddress& address);

    /// Ends every search that is under way; later ones find nothing. Any thread.
    void Stop() { client_.Stop(); }

  private:
    struct Found {
        std::string title;
        std::string page;
    };
    struct Entry {
        Search search;
        std::optional<Found> found;
        std::chrono::steady_clock::time_point until;
    };
    class Inquiry;

    const Entry* Remembered(const Search& search);
    void Remember(Entry entry);

    const std::string englishSite_;
    const std::string japaneseSite_;
    const Clock clock_;
    SiteClient client_;
    std::mutex mutex_;          ///< guards `entries_`
    std::list<Entry> entries_;  ///< the last used first
};

}  // namespace sorakaze::gateway
