// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The services that the application brings itself: a search engine that redirects to an encyclopaedia, that
// encyclopaedia's articles in plain markup, and a voice service with a form. They are reached over the
// loopback interface alone, and only by who knows this run's token.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace sorakaze::gateway {

struct Options {
    /// Where the programs say and SayKotoeri stand.
    std::filesystem::path resources;
    /// A folder of the application's own, mode 0700, that sounds are made in; asked for at the first sound.
    std::function<std::filesystem::path()> temporaryFolder;

    /// The encyclopaedia's two sites, as scheme and host ("https://...", and nothing but TLS is spoken).
    /// Empty: no encyclopaedia, every search finds nothing.
    std::string englishSite = "https://en.wikipedia.org";
    std::string japaneseSite = "https://ja.wikipedia.org";
    /// A file of certificates to trust in place of the system's; for tests.
    std::filesystem::path certificates;
    std::chrono::milliseconds totalTime{15'000};  ///< of all that one search asks of the site
    std::size_t articleSize = 4u << 20;           ///< bytes; an article that is longer is not read
    /// To the sites; a search above that finds nothing. A song takes two to four, and the shortest is half a
    /// minute on the air.
    unsigned requestsPerMinute = 8;
};

class Gateway {
  public:
    /// Binds a free port of 127.0.0.1 and serves it until the end. Throws std::system_error.
    explicit Gateway(Options options);
    /// Ends at once, whatever is under way.
    ~Gateway();
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

    /// What stands in front of the services' paths: "127.0.0.1:PORT/TOKEN".
    std::string Host() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::gateway
