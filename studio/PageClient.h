// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Posts a page's form and fetches the sound that the answer plays, over plain HTTP. Blocks; one thread at a
// time.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <stop_token>
#include <string>

#include "network/web/WebClient.h"

namespace sorakaze::studio {

/// Why there is no answer; for people, without a full stop.
class PageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// There was no answer in time.
class PageTimeout : public PageError {
  public:
    using PageError::PageError;
};

class PageClient {
  public:
    /// Once a stop of `cancelled` is requested, the request under way and all later ones fail at once.
    explicit PageClient(std::stop_token cancelled);

    /// The body of the answer. Throws PageError if it is longer than `mostBytes`, if its status isn't 200, or
    /// if there is none.
    std::string Post(const std::string& address, const std::string& form, std::size_t mostBytes);
    std::string Get(const std::string& address, std::size_t mostBytes);

  private:
    web::Client client_;
};

}  // namespace sorakaze::studio
