// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <chrono>

#include "app/runtime/Application.h"
#include "http/HTTPSocket.h"

namespace sorakaze {

/// Passes over the socket until the page is in: fire what is due, let the others have their turn, look for
/// signs of life, then at the time. A pass in which nothing arrived lasts until something does.
void HTTPSocket::WaitForPage() {
    const Clock& clock = Runtime::Current().GetClock();
    const Scheduler::KeepToWall toTheWall(Runtime::Current().Threads());
    _pageComplete = false;
    mErrorCode = 0;  // kept behaviour 67
    TickCount deadline = 0;
    bool connection = false;
    std::int32_t length = 0;

    const auto renew = [&] { deadline = clock.Tick() + TickCount{timeoutSeconds} * kTicksPerSecond; };
    // Kept behaviour 68.
    const auto lives = [&] { return _connectionValid != connection || _pageBuffer.Length() != length; };
    const auto timedOut = [&] { return timeoutSeconds > 0 && deadline < clock.Tick(); };
    const auto ended = [&] { return _pageComplete || mErrorCode != 0; };
    renew();
    while (!ended()) {
        Poll();
        GiveWay([&] { return !HasEvents() && !ended() && !lives() && !timedOut(); },
                timeoutSeconds > 0 ? TimeOfTick(deadline + 1) : std::chrono::nanoseconds::max());
        if (_connectionValid != connection) {
            connection = _connectionValid;
            renew();
        } else if (_pageBuffer.Length() != length) {
            length = _pageBuffer.Length();
            renew();
        }
        if (timedOut()) {
            Close();
            SetError(kTimeout);
        }
    }
}

/// Lets others run for as long as nothing happens to the request, which isn't before `lookAgain` unless the
/// network tells. With Yield, the main thread handles events meanwhile.
void HTTPSocket::GiveWay(FunctionRef<bool()> nothingHappens, std::chrono::nanoseconds lookAgain) {
    Runtime& runtime = Runtime::Current();
    const bool handlesEvents = Yield && runtime.Threads().OnMainThread();
    if (!nothingHappens()) {
        sorakaze::Yield();
        if (!handlesEvents) return;
        // An event of our own, so that those that are due are handled without a wait for others.
        runtime.Events().Post([] {});
        App.DoEvents(-1);
    } else if (handlesEvents) {
        App.DoEventsWhile(nothingHappens);
    } else {
        runtime.Threads().WaitWhile(nothingHappens, &lookAgain);
    }
}

}  // namespace sorakaze
