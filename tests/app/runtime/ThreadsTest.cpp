// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
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

std::unique_ptr<Clock> MakeClock(bool wall) {
    if (wall) return std::make_unique<WallClock>();
    return std::make_unique<StudioClock>();
}

void RunToEnd(Thread& thread) {
    App.DoEventsWhile([&] { return thread.State() == Thread::kRunning; });
}

void RunThread(std::function<void()> run) {
    Thread thread;
    thread.RunEvent = std::move(run);
    thread.Run();
    RunToEnd(thread);
}

TEST(Threads, TakeTurnsAtYieldsFirstComeFirstServed) {
    TestRuntime test;
    std::string order;
    Thread threads[2];
    for (int t = 0; t < 2; ++t) {
        threads[t].RunEvent = [&, t] {
            for (int i = 0; i < 3; ++i, Yield()) order += static_cast<char>('a' + t);
        };
        threads[t].Run();
    }
    EXPECT_EQ(order, "") << "Run returns before the thread has its first turn";
    EXPECT_THROW(threads[0].Run(), ThreadAlreadyRunningException);
    RunToEnd(threads[1]);
    EXPECT_EQ(order, "ababab");
}

TEST(Threads, LoopsAndWaitsLeaveEventsToTheMainThread) {
    TestRuntime test;
    int handled = 0;
    const auto handle = [&] {
        EXPECT_TRUE(test.runtime.Threads().OnMainThread());
        ++handled;
    };
    RunThread([&] {
        test.runtime.Events().Post(handle);
        while (handled == 0) Yield();
        test.runtime.Events().Post(handle);
        App.DoEventsWhile([&] { return handled == 1; });
    });
    EXPECT_EQ(handled, 2);
}

TEST(Threads, AWaitForAnotherThreadEndsInTheSameTick) {
    TestRuntime test;
    std::int32_t ended = -1;
    Thread worker;
    worker.RunEvent = [] { WaitWhile([] { return Ticks() < 7; }); };
    RunThread([&] {
        worker.Run();
        WaitWhile([&] { return worker.State() == Thread::kRunning; });
        ended = Ticks();
    });
    EXPECT_EQ(ended, 7);
}

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
             Runtime::Current().Threads().Block(Blocking::ClockStopped, [](std::stop_token cancelled) {
                 while (!cancelled.stop_requested()) std::this_thread::yield();
             });
         }},
    };
    for (const auto& place : places) {
        for (const bool wall : {false, true}) {
            SCOPED_TRACE(place.where);
            TestRuntime test(MakeClock(wall));
            test.host.hold = true;
            int unwound = 0;
            bool ranAgain = false;
            Thread thread;
            thread.RunEvent = [&] {
                const std::shared_ptr<void> unwinding(nullptr, [&](void*) { ++unwound; });
                place.stand();
                ADD_FAILURE() << "it went on";
            };
            thread.Run();
            Yield();
            Yield();
            thread.Kill();
            EXPECT_EQ(thread.State(), Thread::kNotRunning);
            // The same object runs anew while the old run still unwinds.
            thread.RunEvent = [&] { ranAgain = true; };
            thread.Run();
            RunToEnd(thread);
            EXPECT_TRUE(ranAgain);
            App.DoEventsWhile([&] { return unwound == 0; });
        }
    }
}

TEST(Threads, KillEndsAShellCommandAndItsProcesses) {
    TestRuntime test;
    Thread thread;
    // Held by a process in the background.
    const auto lock = test.folder.Write("Sorakaze.app/Contents/Resources/ipadic", "");
    const auto begun = SpecialFolder::Temporary()->Child("begun");
    thread.RunEvent = [&] {
        Shell().Execute("(flock " + lock.string() + " sh -c 'echo x > " + begun->Path().string() +
                            "; sleep 1000') & sleep 1000",
                        begun);
        ADD_FAILURE() << "it went on";
    };
    thread.Run();
    Yield();
    std::error_code failure;
    while (std::filesystem::file_size(begun->Path(), failure) == 0 || failure) std::this_thread::yield();
    thread.Kill();
    EXPECT_EQ(thread.State(), Thread::kNotRunning);
    test.Pass(1);
    const int file = open(lock.c_str(), O_RDONLY);
    EXPECT_EQ(flock(file, LOCK_EX), 0) << "ends with the last process";
    close(file);
    EXPECT_FALSE(begun->Exists());
}

TEST(Threads, ExceptionsAreToldAndTheRestLivesOn) {
    TestRuntime test;
    RunThread([] {
        WaitWhile([] {
            if (Ticks() == 3) throw NilObjectException("in the wait");
            return true;
        });
    });
    test.runtime.Events().Post([] { throw OutOfBoundsException("99"); });
    test.Pass(2);
    EXPECT_EQ(test.host.Messages(),
              (std::vector<std::string>{"NilObjectException: in the wait", "OutOfBoundsException: 99"}));
}

TEST(Threads, NoTimePassesInTheStudioDuringAProcessAndCallsComeBackInOrder) {
    for (int round = 0; round < 20; ++round) {
        TestRuntime test;
        std::string order;
        Thread threads[2];
        for (int t = 0; t < 2; ++t) {
            threads[t].RunEvent = [&order, t] {
                const std::int32_t before = Ticks();
                Runtime::Current().Threads().Block(Blocking::ClockStopped, [t](std::stop_token) {
                    std::this_thread::sleep_for(std::chrono::microseconds(t == 0 ? 3000 : 100));
                });
                EXPECT_EQ(Ticks(), before);
                order += "sf"[t];
            };
            threads[t].Run();
        }
        RunThread([] { WaitWhile([] { return Ticks() < 100; }); });
        ASSERT_EQ(order, "sf");
    }
}

/// However long the machine takes for it.
void ExpectTicksOfTheWall(const std::function<void()>& wait) {
    const std::int32_t before = Ticks();
    const auto begin = std::chrono::steady_clock::now();
    wait();
    const std::int32_t ticks = Ticks() - before;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(ticks, 1);
    EXPECT_LE(ticks, took.count() * kTicksPerSecond + 1) << "the tick it began in may have been under way";
}

TEST(Threads, TheStudiosClockKeepsToTheWallForTheNetwork) {
    TestRuntime test;
    RunThread([&] {
        ExpectTicksOfTheWall([&] {
            test.runtime.Threads().Block(Blocking::ClockFollowsWall, [](std::stop_token) {
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            });
        });
        ExpectTicksOfTheWall([&] {
            const Scheduler::FollowWallClock followWall(test.runtime.Threads());
            const std::int32_t before = Ticks();
            App.DoEventsWhile([&] { return Ticks() - before < 10; });
        });
    });
    // An hour, at the studio's speed again.
    test.Pass(60 * 60 * kTicksPerSecond);
}

TEST(Timers, TheWallClockKeepsTime) {
    TestRuntime test(MakeClock(true));
    ExpectTicksOfTheWall([&] { test.Pass(12); });
}

TEST(Timers, FireAtTheirPeriodAndAHandlerThatTakesLongPutsTheNextOneOff) {
    TestRuntime test;
    Timer timer;
    timer.SetPeriod(200);
    std::vector<std::int32_t> ticks;
    timer.Action = [&] {
        EXPECT_TRUE(test.runtime.Threads().OnMainThread());
        ticks.push_back(Ticks());
        if (ticks.size() == 2) WaitWhile([&] { return Ticks() - ticks.back() < 240; });
    };
    test.Pass(5);
    timer.SetMode(Timer::kMultiple);
    test.Pass(290);
    timer.SetMode(Timer::kOff);
    test.Pass(30);
    EXPECT_EQ(ticks, (std::vector<std::int32_t>{17, 29, 281, 293}));
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

TEST(Timers, PostsFromOtherThreadsArrive) {
    for (const bool wall : {false, true}) {
        TestRuntime test(MakeClock(wall));
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
        TestRuntime test(MakeClock(false), nullptr, 42);
        Random random;
        std::vector<std::int32_t> drawn;
        for (int i = 0; i < 3000; ++i) drawn.push_back(random.InRange(-1, 1));
        for (const int value : {-1, 0, 1}) EXPECT_GT(std::ranges::count(drawn, value), 800);
        EXPECT_EQ(random.InRange(1, 0), 1);
        random.InRange(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
        return drawn;
    };
    EXPECT_EQ(draw(), draw());
}

}  // namespace
}  // namespace sorakaze
