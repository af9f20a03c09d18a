// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/RequestLimit.h"

#include <algorithm>

namespace sorakaze::gateway {

bool RequestLimit::Take() {
    const std::lock_guard lock(mutex_);
    const auto now = clock_();
    while (!taken_.empty() && now - taken_.front() >= std::chrono::minutes(1)) taken_.pop_front();
    if (now < pausedUntil_ || taken_.size() >= perMinute_) return false;
    taken_.push_back(now);
    return true;
}

void RequestLimit::Pause(std::chrono::seconds pause) {
    const std::lock_guard lock(mutex_);
    pausedUntil_ = std::max(pausedUntil_, clock_() + pause);
}

}  // namespace sorakaze::gateway
