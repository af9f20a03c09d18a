// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "onair/WallTime.h"

namespace sorakaze::onair {
namespace {

struct WallClocks : testing::Test {
    WallClocks() {
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        tzset();
    }
    ~WallClocks() override {
        unsetenv("TZ");
        tzset();
    }
    static std::string Next(DayTime time, std::int64_t now) {
        return IsoTime(NextTime(time, WallTime(std::chrono::seconds(now))));
    }
};

TEST_F(WallClocks, TheNextTimeIsTodayOrTomorrow) {
    constexpr std::int64_t kNoon = 1795604400;  // 2026-11-25T12:00:00+01:00
    EXPECT_EQ(IsoTime(WallTime(std::chrono::milliseconds(kNoon * 1000 + 7))),
              "2026-11-25T12:00:00.007+01:00");
    EXPECT_EQ(Next({12, 1}, kNoon), "2026-11-25T12:01:00.000+01:00");
    EXPECT_EQ(Next({12, 0}, kNoon), "2026-11-26T12:00:00.000+01:00");
    EXPECT_EQ(Next({7, 0}, kNoon), "2026-11-26T07:00:00.000+01:00");
    EXPECT_EQ(Next({0, 0}, kNoon + 6 * 86400), "2026-12-02T00:00:00.000+01:00");
}

TEST_F(WallClocks, TheNightOfTheChangeHasItsTimesToo) {
    constexpr std::int64_t kEve = 1774724400;  // 2026-03-28T20:00:00+01:00, the clock goes forward at two
    EXPECT_EQ(Next({7, 0}, kEve), "2026-03-29T07:00:00.000+02:00");
    const WallTime skipped = NextTime({2, 30}, WallTime(std::chrono::seconds(kEve)));
    EXPECT_EQ(IsoDay(skipped), "2026-03-29");
}

}  // namespace
}  // namespace sorakaze::onair
