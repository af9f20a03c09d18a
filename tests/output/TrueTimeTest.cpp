// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "app/output/TrueTime.h"

namespace sorakaze::output {
namespace {

using namespace std::chrono_literals;

TEST(TrueTime, NeverDriftsHoweverLateItIsAsked) {
    const TrueTime::Clock::time_point start{1000h};
    TrueTime time(start);
    std::int64_t frames = 0;
    auto now = start;
    for (int wake = 0; wake < 100'000; ++wake) {
        now = time.NextDeadline() + std::chrono::microseconds(wake * 7919 % 90'000);
        frames += time.TakeDue(now) * TrueTime::kBlock;
        const auto exact = (now - start) / 1us * sound::kSampleRate / 1'000'000;
        ASSERT_LE(frames, exact);
        ASSERT_GT(frames, exact - TrueTime::kBlock);
    }
}

TEST(TrueTime, IsNotDueEarlyAndLosesTheTimeOfAStoppedProcess) {
    const TrueTime::Clock::time_point start{1000h};
    TrueTime time(start);
    EXPECT_EQ(time.TakeDue(start - 1s), 0);
    EXPECT_EQ(time.TakeDue(start + 39ms), 0);
    EXPECT_EQ(time.TakeDue(start + 40ms), 1);
    EXPECT_EQ(time.TakeDue(start + 41ms), 0);
    EXPECT_EQ(time.TakeDue(start + 1h), 1);
    EXPECT_EQ(time.NextDeadline(), start + 1h + TrueTime::kPeriod);
}

}  // namespace
}  // namespace sorakaze::output
