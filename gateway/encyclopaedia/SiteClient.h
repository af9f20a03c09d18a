// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Asks the encyclopaedia's sites, over TLS only. All limits on what a site may do to us, and on what we do to
// a site, are here.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "gateway/encyclopaedia/RequestLimit.h"

namespace sorakaze::gateway {

struct SiteLimits {
    std::filesystem::path certificates;   ///< to trust in place of the system's; empty: the system's
    std::chrono::milliseconds totalTime;  ///< of a session's requests together
    std::size_t answerSize;               ///< bytes
    unsigned requestsPerMinute;
    std::string contact = {};  ///< of who runs the station, for the site's operators; may be empty
};

class SiteClient {
  public:
    explicit SiteClient(SiteLimits limits, Clock clock = &std::chrono::steady_clock::now,
                        Sleep sleep = &SleepFor);
    ~SiteClient();
    SiteClient(const SiteClient&) = delete;
    SiteClient& operator=(const SiteClient&) = delete;

    /// Makes every request that is under way fail at once, and every later one. Any thread.
    void Stop();

    /// The requests of one search: they share a connection and their time. One thread at a time; sessions of
    /// different threads run side by side.
    class Session {
      public:
        explicit Session(SiteClient& client);
        ~Session();
        Session(const Session&) = delete;
        Session& operator=(const Session&) = delete;

        /// The JSON that `site` ("https://host") has under `path`; nullopt for any failure, also one that
        /// arrives as JSON, and for a body of more than `mostBytes`. Waits for its turn under the request
        /// limit. Redirects are followed within the site. A site that doesn't begin an answer, or doesn't end
        /// it in time, is not asked again for a minute, one that refuses us for an hour, one that is busy for
        /// as long as it asks for.
        std::optional<std::string> Get(const std::string& site, const std::string& path,
                                       std::size_t mostBytes);
        /// Why the last Get returned nothing, without a full stop. Empty if it was stopped.
        const std::string& Failure() const;

      private:
        struct Impl;
        std::unique_ptr<Impl> impl_;
    };

  private:
    struct Shared;
    std::unique_ptr<Shared> shared_;
};

}  // namespace sorakaze::gateway
