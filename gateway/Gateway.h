// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The services that the application brings itself: a search engine that redirects to an encyclopaedia, that
// encyclopaedia's articles in plain markup, and a voice service with a form. They are served on the loopback
// interface only, and only to clients that know this run's token.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace sorakaze::gateway {

struct Options {
    /// The folder of the programs say and SayKotoeri.
    std::filesystem::path resources;
    /// Gives a folder of the application's own, mode 0700, to make sounds in. Called at the first sound.
    std::function<std::filesystem::path()> temporaryFolder;

    /// The encyclopaedia's two sites, as scheme and host; the scheme must be https. Every search in an
    /// edition without a site finds nothing.
    std::string englishSite = "https://en.wikipedia.org";
    std::string japaneseSite = "https://ja.wikipedia.org";
    /// A file of certificates to trust in place of the system's; for tests.
    std::filesystem::path certificates;
    std::chrono::milliseconds totalTime{15'000};  ///< of all requests of one search
    std::size_t articleSize = 4u << 20;           ///< bytes; a longer article is not read
    /// To the sites. An artist takes two to six. Half of them may come at once; then a search waits for its
    /// turns, and six of them come before it is tired of waiting.
    unsigned requestsPerMinute = 60;
    /// An address by which the sites' operators reach who runs the station; may be empty.
    std::string contact = {};
};

class Gateway {
  public:
    /// Binds a free port of 127.0.0.1 and serves it until the end. Throws std::system_error.
    explicit Gateway(Options options);
    /// Ends at once, whatever is being done.
    ~Gateway();
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

    /// What the services' paths are appended to: "127.0.0.1:PORT/TOKEN".
    std::string Host() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::gateway
