// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Requests to web servers, within bounds that the caller sets. This folder is the only place that knows
// libcurl. The encyclopaedia's sites are asked with it, and the studio sends a voice service's form. The
// lookup has a client of its own (http/).
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>

namespace sorakaze::web {

struct ClientOptions {
    std::string scheme;               ///< the only one that is spoken, in redirects too: "http" or "https"
    std::string userAgent;            ///< empty: the header is not sent
    long redirects = 0;               ///< that are followed; 0: none, and the answer tells where it leads
    bool acceptsGzip = false;         ///< bodies are decoded; their bounds are those of what they decode to
    bool usesProxyOnLoopback = true;  ///< where the user's environment names a proxy
    std::chrono::milliseconds connectTime{0};  ///< of one request; 0: its total time
    std::filesystem::path certificates;        ///< to trust in place of the system's; empty: the system's
};

struct RequestBounds {
    std::size_t bodyBytes;  ///< a longer answer is none
    std::chrono::milliseconds totalTime;
};

struct Answer {
    enum class End { Whole, TimedOut, Cancelled, Failed };
    End end = End::Cancelled;
    std::string failure;  ///< why it failed; for people, without a full stop
    long status = 0;      ///< 0: no answer began
    std::string body;
    std::string redirect;  ///< the address that an unfollowed redirect leads to; empty without one
    std::chrono::seconds retryAfter{0};  ///< what the server asks for; 0 if nothing
};

/// "libcurl/7.88.1", for a user agent.
std::string LibraryNameAndVersion();

/// Keeps its connection for the next request. TLS is 1.2 or newer, and the certificate and the name in it
/// must be right. One thread at a time; every request blocks.
class Client {
  public:
    /// Once a stop of `cancelled` is requested, on any thread, the request under way and all later ones end
    /// at once. Throws std::bad_alloc.
    Client(const ClientOptions& options, std::stop_token cancelled);
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    Answer Get(const std::string& address, const RequestBounds& bounds);
    /// `form` is an encoded one.
    Answer Post(const std::string& address, const std::string& form, const RequestBounds& bounds);
    /// A header of the last answer; empty without it.
    std::string Header(const char* name) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::web
