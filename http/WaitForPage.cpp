// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <chrono>

#include "app/runtime/Application.h"
#include "http/HTTPSocket.h"

namespace sorakaze {

/// Each pass fires the events that are due, lets others run, and checks for signs of life and then the time.
/// A pass in which nothing arrived lasts until something does.
void HTTPSocket::WaitForPage() {
    const Clock& clock = Runtime::Current().GetClock();
    const Scheduler::FollowWallClock followWall(Runtime::Current().Threads());
    _pageComplete = false;
    mErrorCode = 0;  // kept behaviour 67
    TickCount deadline = 0;
    bool connection = false;
    std::int32_t length = 0;

    const auto renewDeadline = [&] { deadline = clock.Tick() + TickCount{timeoutSeconds} * kTicksPerSecond; };
    // Kept behaviour 68.
    const auto showsLife = [&] { return _connectionValid != connection || _pageBuffer.Length() != length; };
    const auto timedOut = [&] { return timeoutSeconds > 0 && deadline < clock.Tick(); };
    const auto ended = [&] { return _pageComplete || mErrorCode != 0; };
    renewDeadline();
    while (!ended()) {
        Poll();
        LetOthersRun([&] { return !HasEvents() && !ended() && !showsLife() && !timedOut(); },
                     timeoutSeconds > 0 ? TimeOfTick(deadline + 1) : std::chrono::nanoseconds::max());
        if (_connectionValid != connection) {
            connection = _connectionValid;
            renewDeadline();
        } else if (_pageBuffer.Length() != length) {
            length = _pageBuffer.Length();
            renewDeadline();
        }
        if (timedOut()) {
            Close();
            SetError(kTimeout);
        }
    }
}

/// Lets others run while nothing happens to the request: until the network reports something, or
/// `checkAgain`. With Yield, the main thread handles events meanwhile.
void HTTPSocket::LetOthersRun(FunctionRef<bool()> nothingHappens, std::chrono::nanoseconds checkAgain) {
    Runtime& runtime = Runtime::Current();
    const bool handlesEvents = Yield && runtime.Threads().OnMainThread();
    if (!nothingHappens()) {
        sorakaze::Yield();
        if (!handlesEvents) return;
        // With an event of our own, DoEvents handles those that are due without waiting for others.
        runtime.Events().Post([] {});
        App.DoEvents(-1);
    } else if (handlesEvents) {
        App.DoEventsWhile(nothingHappens);
    } else {
        runtime.Threads().WaitWhile(nothingHappens, &checkAgain);
    }
}

}  // namespace sorakaze
