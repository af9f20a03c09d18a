// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Limits the number of requests in any minute, for all threads together. A few may follow each other at once;
// then each waits for its turn, so that a render, which comes to the next artist within seconds, is told as
// much as a show on the air.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <stop_token>

namespace sorakaze::gateway {

using Clock = std::function<std::chrono::steady_clock::time_point()>;
/// Returns after the time, or at once when it is told to stop.
using Sleep = std::function<void(std::chrono::nanoseconds, const std::stop_token&)>;

void SleepFor(std::chrono::nanoseconds time, const std::stop_token& stop);

class RequestLimit {
  public:
    explicit RequestLimit(unsigned perMinute, Clock clock = &std::chrono::steady_clock::now,
                          Sleep sleep = &SleepFor);

    /// True if a request may be sent now; it is then counted. Waits for its turn, and takes that from
    /// `patience`. False at once if its turn is later.
    bool Take(std::chrono::nanoseconds& patience, const std::stop_token& stop);
    /// The site asked for a pause: no turn comes before it is over.
    void Pause(std::chrono::seconds pause);

  private:
    using Time = std::chrono::steady_clock::time_point;
    const std::chrono::nanoseconds interval_;  ///< between two that have to wait
    const std::chrono::nanoseconds burst_;     ///< how far the schedule may be ahead of the clock
    const Clock clock_;
    const Sleep sleep_;
    std::mutex mutex_;  ///< guards the two below
    Time scheduled_{};  ///< where the next request would be if all had an interval between them
    Time pausedUntil_{};
};

}  // namespace sorakaze::gateway
