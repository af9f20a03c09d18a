// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Resolves names, each on a thread of its own: a look-up can hang for half a minute and can't be cancelled.
// Nobody waits for these threads, not even at the application's end: late answers are dropped.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace sorakaze::network {

/// The numeric addresses of a host, in the order in which to try them; none for an unknown name.
/// Called on any thread, on several at once.
using Resolver = std::function<std::vector<std::string>(const std::string& host)>;

/// Asks the system.
std::vector<std::string> ResolveWithSystem(const std::string& host);

class ResolverPool : public std::enable_shared_from_this<ResolverPool> {
  public:
    struct Job {
        std::string host;
        Resolver resolve;
        std::weak_ptr<void> wanted;  ///< expires when the answer is no longer wanted
        /// Called on the look-up's thread.
        std::function<void(std::vector<std::string>)> done;
    };

    /// Any thread. Throws std::system_error where the system has no thread left.
    void Start(Job job);

  private:
    /// The most threads at a time; further look-ups wait.
    static constexpr unsigned kMostThreads = 64;

    void Work();

    std::mutex mutex_;  ///< guards both
    std::deque<Job> waiting_;
    unsigned threads_ = 0;
};

}  // namespace sorakaze::network
