// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How many frames are due when no device asks for them. Every deadline counts from the same start, so that
// delays don't add up.
#pragma once

#include <chrono>
#include <cstdint>

#include "sound/Frames.h"

namespace sorakaze::output {

class SilentClock {
  public:
    using Clock = std::chrono::steady_clock;

    /// Frames come due in blocks of 40 ms: 25 wake-ups a second.
    static constexpr std::int64_t kBlock = sound::kSampleRate / 25;
    static constexpr auto kPeriod = std::chrono::milliseconds(40);

    explicit SilentClock(Clock::time_point start) : start_(start) {}

    /// When the next block is due.
    Clock::time_point NextDeadline() const { return start_ + (passed_ + 1) * kPeriod; }

    /// The blocks that have become due since the last call. A process that was stopped for seconds doesn't
    /// catch up: as with a device, that time is lost.
    std::int64_t TakeDueBlocks(Clock::time_point now) {
        if (now < NextDeadline()) return 0;
        const std::int64_t due = (now - start_) / kPeriod - passed_;
        passed_ += due;
        return due > kMostAtOnce ? 1 : due;
    }

  private:
    static constexpr std::int64_t kMostAtOnce = 50;

    Clock::time_point start_;
    std::int64_t passed_ = 0;  ///< blocks
};

}  // namespace sorakaze::output
