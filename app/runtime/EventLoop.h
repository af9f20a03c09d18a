// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The main thread's events: timers that are due and calls that other threads posted. Handlers run with the
// baton, on the main thread, from Run or from within a handler that waits with DoEvents.
#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <vector>

#include "app/runtime/Scheduler.h"

namespace sorakaze {

/// A timer in the event loop.
struct TimerEntry {
    std::function<void()> onDue;
    std::chrono::nanoseconds period{0};
    std::chrono::nanoseconds due{0};
    bool armed = false;
};

/// A toolkit's event loop that the main thread runs.
class NativeLoop {
  public:
    virtual ~NativeLoop() = default;

    /// EventLoop::HandleFromNative is to be called on the main thread at that time of the clock, or soon
    /// if it has passed. Any thread; an earlier request stays in force.
    virtual void CallAt(std::chrono::nanoseconds due) = 0;

    /// Main thread, without the baton: serves the toolkit for a tick or until something happened. The user's
    /// actions meanwhile are posted, and handled when the main thread's handler has ended or waits for
    /// events.
    virtual void Serve() = 0;
};

class EventLoop {
  public:
    /// `onUncaught` is called, with the baton, for an exception that leaves a handler.
    EventLoop(Scheduler& scheduler, Clock& clock, std::function<void(std::exception_ptr)> onUncaught);

    // With the baton:

    /// `timer` outlives its membership. Its fields may be set at any time.
    void Add(TimerEntry& timer);
    void Remove(TimerEntry& timer);

    /// Handles events until Quit.
    void Run();
    /// Handles the events that are due. If there are none, lets the other threads run, for a tick at most.
    void DoEvents();
    /// Handles events for as long as `condition` holds.
    void DoEventsWhile(FunctionRef<bool()> condition);
    /// A timer's entry has changed.
    void TimersChanged();

    /// Instead of Run, for a main thread that runs a toolkit's loop. `run` is that loop, called without the
    /// baton; it returns when the application is to end, for which Quit asks it through `loop`. `loop`
    /// outlives the event loop.
    void RunNative(NativeLoop& loop, FunctionRef<void()> run);
    /// Main thread, from within the toolkit's loop, without the baton: handles what is due. Does nothing
    /// while a handler waits for something other than events: that handles them later.
    void HandleFromNative();

    // Any thread:
    void Post(std::function<void()> handler);
    void Quit();

  private:
    /// False if an event is due now; `nextDue` is when the next timer will be.
    bool NothingDue(std::chrono::nanoseconds& nextDue);
    void HandleDue();
    void Handle(const std::function<void()>& handler);

    Scheduler& scheduler_;
    Clock& clock_;
    const std::function<void(std::exception_ptr)> onUncaught_;
    std::vector<TimerEntry*> timers_;

    void ServeWhile(FunctionRef<bool()> condition);

    std::atomic<NativeLoop*> native_{nullptr};  ///< set by the main thread
    bool accepting_ = false;  ///< main thread: a call from the toolkit's loop may run handlers

    std::mutex mutex_;  ///< guards posted_
    std::deque<std::function<void()>> posted_;
    std::atomic<bool> anyPosted_{false};
    std::atomic<bool> quit_{false};
};

}  // namespace sorakaze
