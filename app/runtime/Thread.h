// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The logic's thread and timer: controls of a window, with their events as plain functions. Only with the
// baton.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "app/runtime/EventLoop.h"
#include "app/runtime/Scheduler.h"

namespace sorakaze {

class Thread {
  public:
    static constexpr std::int32_t kRunning = 0;
    static constexpr std::int32_t kNotRunning = 4;

    /// The body of the thread: the event that Run starts.
    std::function<void()> RunEvent;

    /// Starts RunEvent on a thread of its own and returns. Raises ThreadAlreadyRunningException while it
    /// runs.
    void Run();
    /// Ends the thread, whatever it does. It counts as not running from here on and can be run again at once.
    void Kill();
    /// kRunning, also while the thread waits for its turn; any other value if it doesn't run.
    std::int32_t State() const;

    std::int32_t Priority = 5;   ///< kept for the window's sake: all threads are equal
    std::int32_t StackSize = 0;  ///< 0 is the system's default, the only size there is

  private:
    std::shared_ptr<Scheduler::Run> run_;
};

class Timer {
  public:
    static constexpr std::int32_t kOff = 0;
    static constexpr std::int32_t kSingle = 1;
    static constexpr std::int32_t kMultiple = 2;

    Timer();
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// What the event loop calls when the timer is due.
    std::function<void()> Action;

    std::int32_t Mode() const { return mode_; }
    /// Starts a new period, unless the mode stays the same.
    void SetMode(std::int32_t mode);
    std::int32_t Period() const { return period_; }
    void SetPeriod(std::int32_t milliseconds);

  private:
    std::int32_t mode_ = kOff;
    std::int32_t period_ = 1000;
    TimerEntry entry_;
};

}  // namespace sorakaze
