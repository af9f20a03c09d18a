// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>

#include "app/runtime/Clock.h"

namespace sorakaze::test {

/// The wall's clock, which a test can put forward, or one that a test alone puts forward. Any thread. Whoever
/// waits looks up with the next Scheduler::Notify.
class SkippingClock final : public Clock {
  public:
    explicit SkippingClock(bool runs = true) : runs_(runs) {}
    TickCount Tick() const override { return Now().count() * 3 / 50'000'000; }
    std::chrono::nanoseconds Now() const override {
        return (runs_ ? wall_.Now() : std::chrono::nanoseconds(0)) + skipped_.load();
    }
    bool IsVirtual() const override { return false; }
    void Advance() noexcept override {}
    void Skip(std::chrono::nanoseconds time) { skipped_ = skipped_.load() + time; }

  private:
    const bool runs_;
    WallClock wall_;
    std::atomic<std::chrono::nanoseconds> skipped_{std::chrono::nanoseconds(0)};
};

}  // namespace sorakaze::test
