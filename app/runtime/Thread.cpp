// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Thread.h"

#include <algorithm>

#include "app/runtime/Exceptions.h"
#include "app/runtime/Runtime.h"

namespace sorakaze {

void Thread::Run() {
    AssertBaton();
    if (State() == kRunning) throw ThreadAlreadyRunningException();
    run_ = Runtime::Current().Threads().Start([event = RunEvent] {
        if (event) event();
    });
}

void Thread::Kill() {
    AssertBaton();
    if (run_) Runtime::Current().Threads().Kill(*run_);
}

std::int32_t Thread::State() const {
    AssertBaton();
    return run_ && !Scheduler::HasEnded(*run_) ? kRunning : kNotRunning;
}

Timer::Timer() {
    entry_.onDue = [this] {
        if (mode_ == kSingle) SetMode(kOff);
        if (Action) Action();
    };
    SetPeriod(period_);
    Runtime::Current().Events().Add(entry_);
}

Timer::~Timer() {
    Runtime::Current().Events().Remove(entry_);
}

void Timer::SetMode(std::int32_t mode) {
    AssertBaton();
    if (mode == mode_) return;
    mode_ = mode;
    entry_.armed = mode != kOff;
    if (entry_.armed) entry_.due = Runtime::Current().GetClock().Now() + entry_.period;
    Runtime::Current().Events().TimersChanged();
}

void Timer::SetPeriod(std::int32_t milliseconds) {
    AssertBaton();
    period_ = milliseconds;
    entry_.period = std::chrono::milliseconds(std::max(milliseconds, 1));
    if (entry_.armed) entry_.due = Runtime::Current().GetClock().Now() + entry_.period;
}

}  // namespace sorakaze
