// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/RequestLimit.h"

#include <algorithm>
#include <condition_variable>
#include <utility>

namespace sorakaze::gateway {
namespace {

/// Half of a minute's requests may come at once; the other half is spread over the minute.
unsigned Half(unsigned perMinute) {
    return std::max(perMinute / 2, 1u);
}

}  // namespace

void SleepFor(std::chrono::nanoseconds time, const std::stop_token& stop) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any().wait_for(lock, stop, time, [] { return false; });
}

RequestLimit::RequestLimit(unsigned perMinute, Clock clock, Sleep sleep)
    : interval_(std::chrono::nanoseconds(std::chrono::minutes(1)) / Half(perMinute)),
      burst_(interval_ * (Half(perMinute) - 1)),
      clock_(std::move(clock)),
      sleep_(std::move(sleep)) {}

bool RequestLimit::Take(std::chrono::nanoseconds& patience, const std::stop_token& stop) {
    std::chrono::nanoseconds wait{0};
    {
        const std::lock_guard lock(mutex_);
        const Time now = clock_();
        const Time turn = std::max({now, scheduled_ - burst_, pausedUntil_});
        wait = turn - now;
        if (wait > patience) return false;
        scheduled_ = std::max(scheduled_, turn) + interval_;
    }
    patience -= wait;
    if (wait.count() > 0) sleep_(wait, stop);
    return !stop.stop_requested();
}

void RequestLimit::Pause(std::chrono::seconds pause) {
    const std::lock_guard lock(mutex_);
    pausedUntil_ = std::max(pausedUntil_, clock_() + pause);
}

}  // namespace sorakaze::gateway
