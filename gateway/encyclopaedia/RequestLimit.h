// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Limits the number of requests in any minute, for all threads together.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>

namespace sorakaze::gateway {

using Clock = std::function<std::chrono::steady_clock::time_point()>;

class RequestLimit {
  public:
    explicit RequestLimit(unsigned perMinute, Clock clock = &std::chrono::steady_clock::now)
        : perMinute_(perMinute), clock_(std::move(clock)) {}

    /// True if a request may be sent now; it is then counted. Never waits.
    bool Take();
    /// The site asked for a pause: Take is false until it is over.
    void Pause(std::chrono::seconds pause);

  private:
    const unsigned perMinute_;
    const Clock clock_;
    std::mutex mutex_;  ///< guards the two below
    std::deque<std::chrono::steady_clock::time_point> taken_;
    std::chrono::steady_clock::time_point pausedUntil_{};
};

}  // namespace sorakaze::gateway
