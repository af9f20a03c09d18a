// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// An HTTP server on the loopback interface. It passes each request on with its target as it came, since names
// of artists are in it unencoded, question marks and number signs included. One thread accepts connections,
// and each connection has a thread of its own. However many connections send little or nothing, an admitted
// request is served. The only file that knows libmicrohttpd is its implementation.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "gateway/server/ServiceMessages.h"

namespace sorakaze::gateway {

class LoopbackServer {
  public:
    /// Decides on a request before its body is read. One that isn't admitted gets a 404 without a body.
    using AdmitFunction = std::function<bool(const ServiceRequest&)>;
    /// May take its time. If it throws, the answer is a 500 without a body.
    using AnswerFunction = std::function<ServiceAnswer(const ServiceRequest&)>;

    /// Binds a free port of 127.0.0.1; nothing is served before Start. Throws std::system_error.
    LoopbackServer();
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::uint16_t Port() const;
    /// Both functions are called on the server's threads, several at a time, with all signals blocked. A
    /// connection without an admitted request is closed after `admissionTime`. Throws std::system_error.
    void Start(AdmitFunction admit, AnswerFunction answer,
               std::chrono::milliseconds admissionTime = std::chrono::seconds(5));
    /// Closes every connection and waits for the answers that are being made: their makers must have been
    /// told to end before. Once.
    void Stop();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::gateway
