// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Asks the encyclopaedia's sites, over TLS alone: the certificate and the name in it must hold. Every limit
// that the sites must be kept to, and that they keep us to, stands here.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "gateway/RequestLimit.h"

namespace sorakaze::gateway {

struct SiteLimits {
    std::filesystem::path certificates;  ///< to trust in place of the system's; empty: the system's
    std::chrono::milliseconds totalTime;
    std::size_t answerSize;
    unsigned requestsPerMinute;
};

class SiteClient {
  public:
    explicit SiteClient(SiteLimits limits, Clock clock = &std::chrono::steady_clock::now);
    ~SiteClient();
    SiteClient(const SiteClient&) = delete;
    SiteClient& operator=(const SiteClient&) = delete;

    /// Makes every request that is under way fail at once, and every later one. Any thread.
    void Stop();

    /// The requests of one search: they share a connection and their time.
    class Session {
      public:
        explicit Session(SiteClient& client);
        ~Session();
        Session(const Session&) = delete;
        Session& operator=(const Session&) = delete;

        /// The body of what `site` ("https://host") has under `path`; nothing if it can't be had for any
        /// reason, or is longer than `longest` bytes. Redirects are followed as long as they stay on the
        /// site. A site that didn't begin an answer, or end it in time, is left alone for a minute, and
        /// nothing can be had of it in that time.
        std::optional<std::string> Get(const std::string& site, const std::string& path, std::size_t longest);

      private:
        struct Impl;
        std::unique_ptr<Impl> impl_;
    };

  private:
    struct Shared;
    std::unique_ptr<Shared> shared_;
};

}  // namespace sorakaze::gateway
