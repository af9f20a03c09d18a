// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// An HTTP server on the loopback interface that hands each request on with its target as it came: names of
// artists stand in it unencoded, question marks and number signs included. It keeps one thread that waits,
// and makes one more for each connection. However many connections say nothing or little, a request that is
// admitted is served. It knows nothing of what is served.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace sorakaze::gateway {

struct ServerRequest {
    std::string method;
    std::string target;  ///< the bytes of the request line
    std::string host;    ///< of the header of that name
    /// What a form or the query holds, decoded. Empty until the request has been admitted.
    std::multimap<std::string, std::string> fields;
};

struct ServerAnswer {
    int status = 404;
    std::string contentType = "text/plain; charset=utf-8";
    std::string body;
    std::string location;  ///< of a redirect; empty: none
};

class LoopbackServer {
  public:
    /// Looks at a request before its body is read. One that isn't admitted gets a bare 404.
    using Admits = std::function<bool(const ServerRequest&)>;
    /// May take its time. What it throws becomes a bare 500.
    using Answers = std::function<ServerAnswer(const ServerRequest&)>;

    /// Binds a free port of 127.0.0.1. Both functions are called on threads of the server's own, several at a
    /// time, all signals blocked. Nothing is served before Start. Throws std::system_error.
    LoopbackServer();
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::uint16_t Port() const;
    /// Who hasn't sent an admitted request within `patience` is dropped.
    void Start(Admits admits, Answers answers, std::chrono::milliseconds patience = std::chrono::seconds(5));
    /// Closes every connection and waits for the answers that are being made: whoever makes them must have
    /// been told to end. Once.
    void Stop();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::gateway
