// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/EventLoop.h"

#include <algorithm>
#include <utility>

namespace sorakaze {

EventLoop::EventLoop(Scheduler& scheduler, Clock& clock, std::function<void(std::exception_ptr)> onUncaught)
    : scheduler_(scheduler), clock_(clock), onUncaught_(std::move(onUncaught)) {}

void EventLoop::Add(TimerEntry& timer) {
    timers_.push_back(&timer);
}

void EventLoop::Remove(TimerEntry& timer) {
    std::erase(timers_, &timer);
}

void EventLoop::Post(std::function<void()> handler) {
    {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(handler));
        anyPosted_ = true;
    }
    scheduler_.Notify();
}

void EventLoop::Quit() {
    quit_ = true;
    scheduler_.Notify();
}

void EventLoop::Run() {
    while (!quit_) {
        // Between two timers nothing but a call from outside can end this wait: the processor may sleep that
        // long.
        std::chrono::nanoseconds nextDue{};
        scheduler_.WaitWhile([&] { return !quit_ && NothingDue(nextDue); }, &nextDue);
        if (!quit_) HandleDue();
    }
}

void EventLoop::DoEventsWhile(FunctionRef<bool()> condition) {
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
    // One at a time: a handler that waits with DoEvents must find those behind it.
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
    // A handler that takes longer than a period puts the next one off; missed periods aren't made up for.
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
        // What tells the user of it can fail as well: the application lives on.
        try {
            onUncaught_(std::current_exception());
        } catch (const std::exception&) {
        }
    }
}

}  // namespace sorakaze
