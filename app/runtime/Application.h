// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "app/runtime/Runtime.h"

namespace sorakaze {

/// The application object as the logic reaches it.
class Application {
  public:
    /// Handles pending events and lets the other threads run, then returns. The argument is the time slice;
    /// -1 is the runtime's default, a tick at most, and the only one there is. Elsewhere than on the main
    /// thread it handles no events.
    void DoEvents(std::int32_t) const {
        auto& runtime = Runtime::Current();
        if (OnMainThread()) {
            runtime.Events().DoEvents();
        } else {
            const TickCount begin = runtime.GetClock().Tick();
            runtime.Threads().WaitWhile([&] { return runtime.GetClock().Tick() == begin; });
        }
    }

    /// The loop `while (condition()) DoEvents(-1)`, without waking the thread at each pass.
    void DoEventsWhile(FunctionRef<bool()> condition) const {
        auto& runtime = Runtime::Current();
        if (OnMainThread()) {
            runtime.Events().DoEventsWhile(condition);
        } else {
            runtime.Threads().WaitWhile(condition);
        }
    }

  private:
    static bool OnMainThread() { return Runtime::Current().Threads().OnMainThread(); }
};

inline constexpr Application App;

}  // namespace sorakaze
