// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The two clocks that Ticks reads: the wall clock, for shows on the air, and the studio's, whose time is the
// sound mixed so far.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

namespace sorakaze {

/// Ticks of a clock: sixtieths of a second since it was made.
using TickCount = std::int64_t;

inline constexpr int kTicksPerSecond = 60;

/// Time since the clock was made at the n-th tick, rounded up to whole nanoseconds.
constexpr std::chrono::nanoseconds TimeOfTick(TickCount tick) {
    return std::chrono::nanoseconds((tick * 50'000'000 + 2) / 3);
}

class Clock {
  public:
    virtual ~Clock() = default;

    virtual TickCount Tick() const = 0;
    virtual std::chrono::nanoseconds Now() const = 0;

    /// True for a clock that moves only with Advance, which is called when all threads wait.
    virtual bool IsVirtual() const = 0;

    /// Moves a virtual clock on by one tick. Called with the baton, while every thread waits.
    virtual void Advance() noexcept = 0;
};

class WallClock final : public Clock {
  public:
    TickCount Tick() const override { return Now().count() * 3 / 50'000'000; }
    std::chrono::nanoseconds Now() const override { return std::chrono::steady_clock::now() - begin_; }
    bool IsVirtual() const override { return false; }
    void Advance() noexcept override {}

  private:
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

/// `onTick` computes the sound of one tick (800 frames) before the tick counts as past; empty for no sound.
class StudioClock final : public Clock {
  public:
    explicit StudioClock(std::function<void()> onTick = {}) : onTick_(std::move(onTick)) {}

    TickCount Tick() const override { return tick_.load(std::memory_order_relaxed); }
    std::chrono::nanoseconds Now() const override { return TimeOfTick(Tick()); }
    bool IsVirtual() const override { return true; }
    void Advance() noexcept override {
        if (onTick_) onTick_();
        tick_.store(Tick() + 1, std::memory_order_relaxed);
    }

  private:
    std::function<void()> onTick_;
    std::atomic<TickCount> tick_{0};  // written by the baton's holder, read anywhere
};

}  // namespace sorakaze
