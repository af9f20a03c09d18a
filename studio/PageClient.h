// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Posts a page's form and fetches what the answer plays, over plain HTTP. Blocks; one thread at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace sorakaze::studio {

/// Why there is no answer; for people, without a full stop.
class PageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Nothing came in time.
class PageTimeout : public PageError {
  public:
    using PageError::PageError;
};

class PageClient {
  public:
    /// Once `cancelled` is asked for, what is under way fails at once, and all that follows.
    explicit PageClient(std::stop_token cancelled);
    ~PageClient();
    PageClient(const PageClient&) = delete;
    PageClient& operator=(const PageClient&) = delete;

    /// The body of the answer. Throws PageError for one that is longer than `largest` bytes, that has another
    /// status than 200, or that doesn't come.
    std::string Post(const std::string& address, const std::string& form, std::size_t largest);
    std::string Get(const std::string& address, std::size_t largest);

  private:
    struct Handles;
    std::string Perform(const std::string& address, std::size_t largest);

    const std::stop_token cancelled_;
    std::unique_ptr<Handles> handles_;
    std::stop_callback<std::function<void()>> wake_;
};

}  // namespace sorakaze::studio
