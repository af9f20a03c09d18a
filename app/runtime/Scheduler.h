// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Cooperative threads over real ones. There is one baton; who holds it runs logic, and it is passed on, first
// come first served, only at yield points: Yield (the end of a working pass), WaitWhile (a waiting pass) and
// Block (a blocking call, made without the baton). Whoever gives the baton up while nobody is ready looks
// after the waiting conditions and the time on the spot, so a tick costs no switch of threads.
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

/// How a driven clock goes on while a thread is in a blocking call. The wall clock takes no notice.
enum class Blocking {
    TimeStands,    ///< a process, a file, a question to the user: no time passes, so shows come out the same
                   ///< each time
    TimeAsOnWall,  ///< the network: a tick of the clock takes at least a tick of the wall
};

class Scheduler {
  public:
    class Run;

    /// Held around waits for the network: meanwhile a tick of a driven clock takes at least a tick of the
    /// wall, as during calls of Blocking::TimeAsOnWall. The wall clock takes no notice. With the baton; a
    /// killed thread lets go as it unwinds.
    class KeepToWall {
      public:
        explicit KeepToWall(Scheduler& scheduler) : scheduler_(scheduler) {
            scheduler_.AssertBaton();
            ++scheduler_.keptToWall_;
        }
        ~KeepToWall() {
            scheduler_.AssertBaton();
            --scheduler_.keptToWall_;
        }
        KeepToWall(const KeepToWall&) = delete;
        KeepToWall& operator=(const KeepToWall&) = delete;

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

    /// A new thread, ready behind all that are ready now. Throws std::system_error where the system has no
    /// thread left.
    std::shared_ptr<Run> Start(std::function<void()> body);
    /// Nothing of the thread's body runs any more but its destructors: ThreadKilled is thrown at its next
    /// yield point, or when its blocking call, which is asked to stop, returns.
    void Kill(Run& run);
    static bool HasEnded(const Run& run);

    /// Lets the others that are ready run, then goes on. Costs nanoseconds when nobody is.
    void Yield();

    /// Waits for as long as `condition` holds. It is looked at once a tick and when something happened, on
    /// whichever thread holds the baton then; it must neither yield nor kill. Where `lookAgain` is given, the
    /// condition promises to hold until that time of the clock unless something happens (and may move it at
    /// each look).
    void WaitWhile(FunctionRef<bool()> condition, const std::chrono::nanoseconds* lookAgain = nullptr);

    /// Runs `call` without the baton. The token asks it to come back early because its thread was killed.
    void Block(Blocking kind, FunctionRef<void(std::stop_token)> call);

    /// Within the call of a Block of the calling thread: takes the baton for `call`, and gives it up again.
    /// For a toolkit's event loop that calls back into the logic.
    void WithBaton(FunctionRef<void()> call);

    /// Where the main thread lives in a toolkit's event loop: what it does, without the baton, for a while of
    /// a WaitWhile, so that its window still repaints. It may raise ThreadKilled when the application is to
    /// end.
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
    enum class Role { None, Proceed, Lead };

    static void CheckKilled(const Run& run);
    Run& Self() const;
    void Enter(const std::shared_ptr<Run>& run);
    void Leave(Run& self, Blocking kind);
    void Return(Run& self);
    void GiveWay(Run& self);
    void Park(Run& self);
    void PassOn();
    void Hand(Run& next, Role role);
    void Lead(Run& self);
    Run* PickNext();
    void TakeReturned();
    void LookAtConditions(bool all);
    static bool StillHolds(Run& run);
    bool LetTimePass();
    bool LetDrivenTimePass();
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
    TickCount lastLook_ = 0;
    unsigned yields_ = 0;
    unsigned keptToWall_ = 0;  ///< KeepToWalls that are held
    std::chrono::steady_clock::time_point lastAdvance_{};
    std::shared_ptr<Run> main_;
    std::function<void()> mainWait_;
    bool closing_ = false;  ///< whoever is started from now on ends at once

    std::mutex mutex_;                 ///< guards held_, each run's role and returned mark
    std::condition_variable changed_;  ///< wakes the one who looks after the time
    bool held_ = true;                 ///< somebody has the baton
    /// Whoever looks after the time is to look up. Set by Notify and by calls that come back.
    std::atomic<bool> happened_{false};
    /// The conditions are to be looked at, whoever is ready. Calls that come back leave it alone: when they
    /// do is chance, and under a driven clock chance must not change who goes first.
    std::atomic<bool> notified_{false};
    std::atomic<Run*> current_{
        nullptr};  ///< the baton's holder; written by it, read by anybody who asks for himself
};

}  // namespace sorakaze
