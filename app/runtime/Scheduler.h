// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Cooperative threads over real ones. There is one baton; who holds it runs logic, and it is passed on, first
// come first served, only at yield points: Yield (the end of a working pass), WaitWhile (a waiting pass) and
// Block (a blocking call, made without the baton). A thread that gives the baton up while no other is ready
// dispatches: it checks the waiting conditions and lets time pass itself, so a tick costs no switch of
// threads.
#pragma once

#include <atomic>
#include <cassert>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include "app/runtime/Clock.h"
#include "base/FunctionRef.h"

namespace sorakaze {

/// Thrown at a killed thread's next yield point. Derived from nothing, so that no handler of the logic
/// catches it. A destructor must not yield, or this could leave it.
struct ThreadKilled {};

/// What a virtual clock does while a thread is in a blocking call. The wall clock runs on in any case.
enum class Blocking {
    ClockStopped,      ///< for a process, a file or a message box: a show is the same each time
    ClockFollowsWall,  ///< for the network: a tick takes at least as long as on the wall clock
};

class Scheduler {
  public:
    class Run;

    /// Held around waits for the network: meanwhile a virtual clock runs no faster than the wall clock, as
    /// during calls of Blocking::ClockFollowsWall. Made and destroyed with the baton.
    class FollowWallClock {
      public:
        explicit FollowWallClock(Scheduler& scheduler) : scheduler_(scheduler) {
            scheduler_.AssertBaton();
            ++scheduler_.wallFollowers_;
        }
        ~FollowWallClock() {
            scheduler_.AssertBaton();
            --scheduler_.wallFollowers_;
        }
        FollowWallClock(const FollowWallClock&) = delete;
        FollowWallClock& operator=(const FollowWallClock&) = delete;

      private:
        Scheduler& scheduler_;
    };

    /// The calling thread becomes the main thread, with the baton. `onUncaught` is called, with the baton,
    /// for an exception that leaves a thread.
    Scheduler(Clock& clock, std::function<void(std::exception_ptr)> onUncaught);
    /// On the main thread. Calls EndThreads.
    ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    // With the baton only:

    /// On the main thread: kills all other threads, those that are started meanwhile too, and waits until
    /// they have unwound.
    void EndThreads();

    /// A new thread, the last of those that are ready. Throws std::system_error where the system has no
    /// thread left.
    std::shared_ptr<Run> Start(std::function<void()> body);
    /// Throws ThreadKilled in the thread at its next yield point. A blocking call of it is asked to stop, and
    /// the exception is thrown when that returns.
    void Kill(Run& run);
    static bool HasEnded(const Run& run);

    /// Lets the others that are ready run, then goes on. Costs nanoseconds when nobody is.
    void Yield();

    /// Waits while `condition` holds. It is checked once a tick and after Notify, on whichever thread holds
    /// the baton then; it must neither yield nor kill. With `recheckAt` it is known to hold until that time
    /// of the clock unless Notify is called; each check may set another time.
    void WaitWhile(FunctionRef<bool()> condition, const std::chrono::nanoseconds* recheckAt = nullptr);

    /// Runs `call` without the baton. The token asks it to come back early because its thread was killed.
    void Block(Blocking kind, FunctionRef<void(std::stop_token)> call);

    /// Called within a Block of the same thread: runs `call` with the baton. For a toolkit's event loop that
    /// calls back into the logic.
    void WithBaton(FunctionRef<void()> call);

    /// For a main thread that runs a toolkit's event loop: `serve` is called, without the baton, again and
    /// again during its WaitWhile, so that the window still repaints. It may throw ThreadKilled when the
    /// application is to end.
    void SetMainWait(std::function<void()> serve);

    // Any thread:

    /// Something happened outside the baton that a condition may depend on.
    void Notify();
    /// True on the thread that holds the baton.
    bool HoldsBaton() const;
    /// True on the thread that made the scheduler.
    bool OnMainThread() const;

    /// For operations that only the baton's holder may call. Does nothing in a release build.
    void AssertBaton() const { assert(HoldsBaton()); }

  private:
    enum class Role { None, Proceed, Dispatch };

    static void CheckKilled(const Run& run);
    Run& Self() const;
    void Enter(const std::shared_ptr<Run>& run);
    void BeginBlocking(Run& self, Blocking kind);
    void EndBlocking(Run& self);
    void WaitForTurn(Run& self);
    void AwaitRole(Run& self);
    void PassBaton();
    void GiveBaton(Run& next, Role role);
    void Dispatch(Run& self);
    Run* PickNext();
    void TakeReturned();
    void CheckConditions(bool all);
    static bool StillHolds(Run& run);
    bool AdvanceTime();
    bool AdvanceVirtualTime();
    void SleepUntil(std::chrono::nanoseconds time);
    void JoinFinished();

    Clock& clock_;
    const std::function<void(std::exception_ptr)> onUncaught_;

    // Touched by the baton's holder only.
    std::deque<Run*> ready_;
    std::vector<Run*> waiting_;
    std::vector<Run*> blocked_;  ///< in the order in which their calls began
    std::vector<std::shared_ptr<Run>> live_;
    std::vector<std::thread> finished_;
    TickCount lastCheck_ = 0;
    unsigned yields_ = 0;
    unsigned wallFollowers_ = 0;  ///< how many FollowWallClock there are
    std::chrono::steady_clock::time_point lastAdvance_{};
    std::shared_ptr<Run> main_;
    std::function<void()> mainWait_;
    bool closing_ = false;  ///< whoever is started from now on ends at once

    std::mutex mutex_;                 ///< guards held_, each run's role and returned mark
    std::condition_variable changed_;  ///< wakes the dispatching thread
    bool held_ = true;                 ///< somebody has the baton
    /// Wakes the dispatching thread. Set by Notify and by blocking calls that return.
    std::atomic<bool> wakeRequested_{false};
    /// The conditions are to be checked even if a thread is ready. Not set by blocking calls that return:
    /// when they do is chance, and with a virtual clock chance must not change the order of threads.
    std::atomic<bool> notified_{false};
    std::atomic<Run*> current_{
        nullptr};  ///< the baton's holder; written by it, compared by any thread with itself
};

}  // namespace sorakaze
