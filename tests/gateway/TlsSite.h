// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A web site on loopback over TLS, whose answers a test gives. It ends with its scope.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/gateway/Certificates.h"

namespace sorakaze::test {

class TlsSite {
  public:
    struct Answer {
        int status = 200;
        std::string body;
        std::string header;  ///< "Name: value"; empty: none
        bool endless = false;
    };
    /// Called with "/path?query" on the site's threads, one at a time.
    using Answers = std::function<Answer(const std::string&)>;

    TlsSite(const Certificate& certificate, Answers answers);
    ~TlsSite();
    TlsSite(const TlsSite&) = delete;
    TlsSite& operator=(const TlsSite&) = delete;

    /// "https://localhost:PORT".
    std::string Address() const;
    /// What was asked for so far.
    std::vector<std::string> Requests() const;
    /// The header of that name of the last request.
    std::string LastUserAgent() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::test
