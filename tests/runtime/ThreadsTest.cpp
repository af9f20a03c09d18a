// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "app/runtime/Application.h"
#include "app/runtime/FolderItem.h"
#include "app/runtime/Random.h"
#include "app/runtime/Shell.h"
#include "app/runtime/Thread.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze {
namespace {

using test::TestRuntime;

void RunToEnd(Thread& thread) {
    App.DoEventsWhile([&] { return thread.State() == Thread::kRunning; });
}

TEST(Threads, TakeTurnsAtYieldsFirstComeFirstServed) {
    TestRuntime test;
    std::string order;
    Thread a;
    Thread b;
    a.RunEvent = [&] {
        for (int i = 0; i < 3; ++i) {
            order += 'a';
            Yield();
        }
    };
    b.RunEvent = [&] {
        for (int i = 0; i < 3; ++i) {
            order += 'b';
            Yield();
        }
    };
    a.Run();
    b.Run();
    EXPECT_EQ(order, "") << "Run returns before the thread has its first turn";
    EXPECT_EQ(a.State(), Thread::kRunning);
    RunToEnd(b);
    EXPECT_EQ(order, "ababab");
    EXPECT_EQ(a.State(), Thread::kNotRunning);
}

TEST(Threads, AWorkingLoopHoldsUpNeitherEventsNorWaits) {
    TestRuntime test;
    bool handled = false;
    Thread thread;
    thread.RunEvent = [&] {
        test.runtime.Events().Post([&] { handled = true; });
        while (!handled) Yield();
    };
    thread.Run();
    RunToEnd(thread);
    EXPECT_TRUE(handled);
}

TEST(Threads, WaitsEndAtTheTickTheirConditionDoes) {
    TestRuntime test;
    std::int32_t woken = 0;
    Thread thread;
    thread.RunEvent = [&] {
        const std::int32_t start = Ticks();
        WaitWhile([&] { return Ticks() - start < 150; });
        woken = Ticks() - start;
    };
    thread.Run();
    RunToEnd(thread);
    EXPECT_EQ(woken, 150);
}

TEST(Threads, AWaitForAnotherThreadEndsInTheSameTick) {
    TestRuntime test;
    std::int32_t ended = -1;
    std::int32_t noticed = -1;
    Thread worker;
    Thread waiter;
    worker.RunEvent = [&] {
        WaitWhile([] { return Ticks() < 7; });
        ended = Ticks();
    };
    waiter.RunEvent = [&] {
        WaitWhile([&] { return worker.State() == Thread::kRunning; });
        noticed = Ticks();
    };
    waiter.Run();
    worker.Run();
    RunToEnd(waiter);
    EXPECT_EQ(ended, 7);
    EXPECT_EQ(noticed, 7);
}

TEST(Threads, RunOnARunningThreadRaises) {
    TestRuntime test;
    Thread thread;
    thread.RunEvent = [] { WaitWhile([] { return Ticks() < 5; }); };
    thread.Run();
    EXPECT_THROW(thread.Run(), ThreadAlreadyRunningException);
    RunToEnd(thread);
    thread.Run();
    RunToEnd(thread);
}

struct Unwound {
    explicit Unwound(int& count) : count_(count) {}
    ~Unwound() { ++count_; }
    int& count_;
};

TEST(Threads, KillEndsAThreadWhereverItStands) {
    const struct {
        const char* where;
        std::function<void()> stand;
    } places[] = {
        {"wait", [] { WaitWhile([] { return true; }); }},
        {"working loop",
         [] {
             for (;;) Yield();
         }},
        {"message box", [] { MsgBox("?"); }},
        {"blocking call",
         [] {
             Runtime::Current().Threads().Block(Blocking::TimeStands, [](std::stop_token cancelled) {
                 while (!cancelled.stop_requested()) std::this_thread::yield();
             });
         }},
    };
    for (const auto& place : places) {
        for (const bool wall : {false, true}) {
            std::unique_ptr<Clock> clock = std::make_unique<StudioClock>();
            if (wall) clock = std::make_unique<WallClock>();
            TestRuntime test(std::move(clock));
            test.host.hold = true;
            int unwound = 0;
            bool wentOn = false;
            Thread thread;
            thread.RunEvent = [&] {
                const Unwound unwinding(unwound);
                place.stand();
                wentOn = true;
            };
            thread.Run();
            Yield();
            Yield();
            thread.Kill();
            EXPECT_EQ(thread.State(), Thread::kNotRunning) << place.where;
            // The same object runs anew while the old run still unwinds.
            bool ranAgain = false;
            thread.RunEvent = [&] { ranAgain = true; };
            thread.Run();
            RunToEnd(thread);
            EXPECT_TRUE(ranAgain) << place.where;
            App.DoEventsWhile([&] { return unwound == 0; });
            EXPECT_FALSE(wentOn) << place.where;
        }
    }
}

TEST(Threads, KillEndsAShellCommandAndItsProcesses) {
    TestRuntime test;
    Thread thread;
    bool wentOn = false;
    const auto mark = test.runtime.TemporaryFolder() / "late";
    thread.RunEvent = [&] {
        Shell shell;
        shell.Execute("echo > " + EscapeForShell((test.runtime.TemporaryFolder() / "begun").string()) +
                      "; (sleep 1; echo > " + EscapeForShell(mark.string()) + ") & sleep 60");
        wentOn = true;
    };
    thread.Run();
    Yield();
    while (!std::filesystem::exists(test.runtime.TemporaryFolder() / "begun")) std::this_thread::yield();
    thread.Kill();
    EXPECT_EQ(thread.State(), Thread::kNotRunning);
    test.Pass(1);
    EXPECT_FALSE(wentOn);
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST(Threads, ExceptionsAreToldAndTheRestLivesOn) {
    TestRuntime test;
    Thread thread;
    thread.RunEvent = [] { throw NilObjectException("gone"); };
    thread.Run();
    RunToEnd(thread);
    test.runtime.Events().Post([] { throw OutOfBoundsException("99"); });
    test.Pass(2);
    EXPECT_EQ(test.host.Messages(),
              (std::vector<std::string>{"NilObjectException: gone", "OutOfBoundsException: 99"}));
}

TEST(Threads, AnExceptionInAConditionReachesTheWaitingThread) {
    TestRuntime test;
    Thread thread;
    std::string caught;
    thread.RunEvent = [&] {
        try {
            WaitWhile([] {
                if (Ticks() == 3) throw NilObjectException("in the wait");
                return true;
            });
        } catch (const NilObjectException& error) {
            caught = error.Message();
        }
    };
    thread.Run();
    RunToEnd(thread);
    EXPECT_EQ(caught, "in the wait");
}

TEST(Threads, NoTimePassesInTheStudioDuringAProcessAndCallsComeBackInOrder) {
    for (int round = 0; round < 20; ++round) {
        TestRuntime test;
        std::string order;
        const auto blockFor = [&](std::chrono::microseconds time, char name) {
            return [&order, time, name] {
                const std::int32_t before = Ticks();
                Runtime::Current().Threads().Block(
                    Blocking::TimeStands, [&](std::stop_token) { std::this_thread::sleep_for(time); });
                EXPECT_EQ(Ticks(), before);
                order += name;
            };
        };
        Thread slow;
        Thread fast;
        Thread ticking;
        slow.RunEvent = blockFor(std::chrono::microseconds(3000), 's');
        fast.RunEvent = blockFor(std::chrono::microseconds(100), 'f');
        ticking.RunEvent = [] { WaitWhile([] { return Ticks() < 100; }); };
        ticking.Run();
        slow.Run();
        fast.Run();
        RunToEnd(ticking);
        ASSERT_EQ(order, "sf");
    }
}

TEST(Threads, TheStudiosClockKeepsToTheWallDuringNetworkCalls) {
    TestRuntime test;
    Thread thread;
    std::int32_t passed = 0;
    thread.RunEvent = [&] {
        const std::int32_t before = Ticks();
        Runtime::Current().Threads().Block(Blocking::TimeAsOnWall, [](std::stop_token) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        });
        passed = Ticks() - before;
    };
    thread.Run();
    RunToEnd(thread);
    EXPECT_LE(passed, 7) << "six ticks in a tenth of a second, and the one it began in";
    EXPECT_GE(passed, 1);
}

TEST(Threads, TheStudiosClockKeepsToTheWallInWaitsForTheNetwork) {
    TestRuntime test;
    Thread thread;
    std::int32_t passed = 0;
    std::chrono::duration<double> took{};
    thread.RunEvent = [&] {
        const Scheduler::KeepToWall toTheWall(test.runtime.Threads());
        const std::int32_t before = Ticks();
        const auto begin = std::chrono::steady_clock::now();
        App.DoEventsWhile([&] { return Ticks() - before < 10; });
        took = std::chrono::steady_clock::now() - begin;
        passed = Ticks() - before;
    };
    thread.Run();
    RunToEnd(thread);
    EXPECT_EQ(passed, 10);
    EXPECT_GE(took.count() * kTicksPerSecond, 9) << "the tick it began in may have been under way";
    // An hour, at the studio's speed again.
    test.Pass(60 * 60 * kTicksPerSecond);
}

TEST(Threads, WaitsWithDoEventsLeaveEventsToTheMainThread) {
    TestRuntime test;
    Thread thread;
    bool handled = false;
    thread.RunEvent = [&] {
        test.runtime.Events().Post([&] {
            EXPECT_TRUE(test.runtime.Threads().OnMainThread());
            handled = true;
        });
        App.DoEventsWhile([&] { return !handled; });
    };
    thread.Run();
    RunToEnd(thread);
    EXPECT_TRUE(handled);
}

TEST(Timers, FireAtTheirPeriodOnTheMainThread) {
    TestRuntime test;
    Timer timer;
    timer.SetPeriod(200);
    std::vector<std::int32_t> ticks;
    timer.Action = [&] {
        ticks.push_back(Ticks());
        EXPECT_TRUE(Runtime::Current().Threads().OnMainThread());
    };
    test.Pass(5);
    timer.SetMode(Timer::kMultiple);
    test.Pass(37);
    EXPECT_EQ(ticks, (std::vector<std::int32_t>{17, 29, 41}));
    timer.SetMode(Timer::kOff);
    test.Pass(30);
    EXPECT_EQ(ticks.size(), 3u);
}

TEST(Timers, AHandlerThatTakesLongPutsTheNextOneOff) {
    TestRuntime test;
    Timer timer;
    timer.SetPeriod(200);
    std::vector<std::int32_t> ticks;
    timer.Action = [&] {
        ticks.push_back(Ticks());
        const std::int32_t begin = Ticks();
        if (ticks.size() == 1) WaitWhile([&] { return Ticks() - begin < 240; });
    };
    timer.SetMode(Timer::kMultiple);
    test.Pass(301);
    EXPECT_EQ(ticks, (std::vector<std::int32_t>{12, 264, 276, 288, 300}));
}

TEST(Timers, EventsAreHandledWithinDoEvents) {
    TestRuntime test;
    int posted = 0;
    Thread thread;
    thread.RunEvent = [] { WaitWhile([] { return Ticks() < 30; }); };
    test.runtime.Events().Post([&] {
        thread.Run();
        test.runtime.Events().Post([&] { ++posted; });
        while (thread.State() == Thread::kRunning) App.DoEvents(-1);
        EXPECT_EQ(posted, 1) << "handled in the wait, within the handler";
    });
    test.Pass(60);
    EXPECT_EQ(posted, 1);
}

TEST(Timers, TheWallClockKeepsTimeAndSleeps) {
    TestRuntime test(std::make_unique<WallClock>());
    Thread thread;
    thread.RunEvent = [] {
        const std::int32_t start = Ticks();
        WaitWhile([&] { return Ticks() - start < 12; });
    };
    const auto begin = std::chrono::steady_clock::now();
    thread.Run();
    RunToEnd(thread);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(180));
}

TEST(Timers, PostsFromOtherThreadsArrive) {
    for (const bool wall : {false, true}) {
        std::unique_ptr<Clock> clock = std::make_unique<StudioClock>();
        if (wall) clock = std::make_unique<WallClock>();
        TestRuntime test(std::move(clock));
        int handled = 0;
        std::thread other([&] {
            for (int i = 0; i < 1000; ++i) test.runtime.Events().Post([&] { ++handled; });
            test.runtime.Events().Post([&] { test.runtime.Events().Quit(); });
        });
        test.runtime.Events().Run();
        other.join();
        EXPECT_EQ(handled, 1000);
    }
}

TEST(Random, CoversItsRangeAndFollowsTheSeed) {
    const auto draw = [] {
        TestRuntime test(std::make_unique<StudioClock>(), nullptr, 42);
        std::vector<std::int32_t> drawn;
        int counts[3] = {};
        for (int i = 0; i < 3000; ++i) {
            Random random;
            drawn.push_back(random.InRange(-1, 1));
            ++counts[drawn.back() + 1];
        }
        for (const int count : counts) EXPECT_GT(count, 800);
        Random random;
        EXPECT_EQ(random.InRange(5, 5), 5);
        EXPECT_EQ(random.InRange(1, 0), 1);
        random.InRange(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
        return drawn;
    };
    EXPECT_EQ(draw(), draw());
}

}  // namespace
}  // namespace sorakaze
