// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/EventLoop.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace sorakaze {

EventLoop::EventLoop(Scheduler& scheduler, Clock& clock, std::function<void(std::exception_ptr)> onUncaught)
    : scheduler_(scheduler), clock_(clock), onUncaught_(std::move(onUncaught)) {}

void EventLoop::Add(TimerEntry& timer) {
    scheduler_.AssertBaton();
    timers_.push_back(&timer);
}

void EventLoop::Remove(TimerEntry& timer) {
    scheduler_.AssertBaton();
    std::erase(timers_, &timer);
}

void EventLoop::Post(std::function<void()> handler) {
    {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(handler));
        anyPosted_ = true;
    }
    scheduler_.Notify();
    if (NativeLoop* loop = native_) loop->CallAt({});
}

void EventLoop::Quit() {
    quit_ = true;
    scheduler_.Notify();
    if (NativeLoop* loop = native_) loop->CallAt({});
}

void EventLoop::TimersChanged() {
    scheduler_.AssertBaton();
    NativeLoop* loop = native_;
    if (!loop) return;
    std::chrono::nanoseconds nextDue{};
    if (!NothingDue(nextDue)) nextDue = {};
    if (nextDue != std::chrono::nanoseconds::max()) loop->CallAt(nextDue);
}

void EventLoop::RunNative(NativeLoop& loop, FunctionRef<void()> run) {
    scheduler_.AssertBaton();
    if (quit_) return;
    native_ = &loop;
    scheduler_.SetMainWait([this] {
        const bool accepting = std::exchange(accepting_, false);
        native_.load()->Serve();
        accepting_ = accepting;
        if (quit_) throw ThreadKilled();
    });
    accepting_ = true;
    TimersChanged();
    if (anyPosted_) loop.CallAt({});
    scheduler_.Block(Blocking::ClockStopped, [&](std::stop_token) { run(); });
    accepting_ = false;
    scheduler_.SetMainWait({});
    native_ = nullptr;
}

void EventLoop::HandleFromNative() {
    assert(scheduler_.OnMainThread());
    // A handler that waits for something else handles what came meanwhile when it has ended.
    if (!accepting_ || quit_) return;
    assert(!scheduler_.HoldsBaton());
    scheduler_.WithBaton([this] {
        accepting_ = false;
        try {
            std::chrono::nanoseconds nextDue{};
            while (!quit_ && !NothingDue(nextDue)) HandleDue();
        } catch (const ThreadKilled&) {
            // The application ends: the waiting handlers have unwound.
        }
        accepting_ = true;
        TimersChanged();
    });
}

/// Serves the toolkit and handles events while the condition holds.
void EventLoop::ServeWhile(FunctionRef<bool()> condition) {
    // For events that came while the handler waited for something else.
    TimersChanged();
    while (condition()) {
        if (quit_) throw ThreadKilled();
        accepting_ = true;
        scheduler_.Block(Blocking::ClockStopped, [this](std::stop_token) { native_.load()->Serve(); });
        accepting_ = false;
    }
    TimersChanged();
}

void EventLoop::Run() {
    scheduler_.AssertBaton();
    while (!quit_) {
        // Between two timers only a call from outside can end this wait, so the processor may sleep that
        // long.
        std::chrono::nanoseconds nextDue{};
        scheduler_.WaitWhile([&] { return !quit_ && NothingDue(nextDue); }, &nextDue);
        if (!quit_) HandleDue();
    }
}

void EventLoop::DoEventsWhile(FunctionRef<bool()> condition) {
    scheduler_.AssertBaton();
    if (native_) {
        ServeWhile(condition);
        return;
    }
    while (condition()) {
        std::chrono::nanoseconds nextDue{};
        bool over = false;
        scheduler_.WaitWhile([&] {
            over = !condition();
            return !over && NothingDue(nextDue);
        });
        if (!over) HandleDue();
    }
}

void EventLoop::DoEvents() {
    scheduler_.AssertBaton();
    if (native_) {
        bool served = false;
        ServeWhile([&served] { return !std::exchange(served, true); });
        return;
    }
    const TickCount begin = clock_.Tick();
    std::chrono::nanoseconds nextDue{};
    scheduler_.WaitWhile([&] { return clock_.Tick() == begin && NothingDue(nextDue); });
    HandleDue();
}

bool EventLoop::NothingDue(std::chrono::nanoseconds& nextDue) {
    nextDue = std::chrono::nanoseconds::max();
    if (anyPosted_) return false;
    for (const TimerEntry* timer : timers_) {
        if (timer->armed) nextDue = std::min(nextDue, timer->due);
    }
    return nextDue > clock_.Now();
}

void EventLoop::HandleDue() {
    // One at a time: a handler that waits with DoEvents must find the next ones in the queue.
    while (anyPosted_) {
        std::function<void()> handler;
        {
            const std::lock_guard lock(mutex_);
            if (posted_.empty()) break;
            handler = std::move(posted_.front());
            posted_.pop_front();
            anyPosted_ = !posted_.empty();
        }
        Handle(handler);
    }
    const auto now = clock_.Now();
    const auto due = std::find_if(timers_.begin(), timers_.end(), [now](const TimerEntry* timer) {
        return timer->armed && timer->due <= now;
    });
    if (due == timers_.end()) return;
    TimerEntry& timer = **due;
    // A handler that takes longer than a period delays the next one; missed periods are skipped.
    timer.due += timer.period;
    Handle(timer.onDue);
    if (timer.due <= clock_.Now()) timer.due = clock_.Now() + timer.period;
}

void EventLoop::Handle(const std::function<void()>& handler) {
    try {
        handler();
    } catch (const ThreadKilled&) {
        throw;
    } catch (...) {
        // Reporting it can fail as well: the application goes on.
        try {
            onUncaught_(std::current_exception());
        } catch (const std::exception&) {
        }
    }
}

}  // namespace sorakaze
