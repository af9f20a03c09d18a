// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Name look-ups, each on a thread of its own: one can hang for half a minute and can't be called off. Nobody
// waits for these threads, at the application's end neither: what a look-up finds when nobody wants it any
// more is dropped.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace sorakaze::network {

/// The numeric addresses of a host, in the order in which to try them; none where the name isn't known.
/// Called on any thread, on several at once.
using Resolver = std::function<std::vector<std::string>(const std::string& host)>;

/// Asks the system.
std::vector<std::string> ResolveBySystem(const std::string& host);

class LookUps : public std::enable_shared_from_this<LookUps> {
  public:
    struct Job {
        std::string host;
        Resolver resolve;
        std::weak_ptr<void> wanted;  ///< gone when nobody waits for the answer any more
        /// Called on the look-up's thread.
        std::function<void(std::vector<std::string>)> done;
    };

    /// Any thread. Throws std::system_error where the system has no thread left.
    void Start(Job job);

  private:
    /// Threads at a time. Hosts that hang are few; look-ups behind this many wait their turn.
    static constexpr unsigned kMostThreads = 64;

    void Work();

    std::mutex mutex_;  ///< guards both
    std::deque<Job> waiting_;
    unsigned threads_ = 0;
};

}  // namespace sorakaze::network
