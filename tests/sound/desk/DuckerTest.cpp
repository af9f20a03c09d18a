// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The hand on the bed's fader: when it goes down, how long it holds, when it is back. In steps of the desk.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "sound/desk/Ducker.h"

namespace sorakaze::sound::testing {
namespace {

/// The depths of a bed that needs `need` dB under words, which are at the steps where `words` has an 'x'.
std::vector<double> Depths(const std::string& words, double need) {
    Ducker ducker;
    std::vector<double> depths;
    const int lookAhead = StepsFromSeconds(1.3);
    for (std::size_t step = 0; step < words.size(); ++step) {
        const std::size_t next = words.find('x', step);
        Ducker::View view{.need = need};
        if (next != std::string::npos && static_cast<int>(next - step) < lookAhead)
            view.stepsToWord = static_cast<int>(next - step);
        depths.push_back(ducker.Step(view));
    }
    return depths;
}

std::string Words(double seconds) {
    return std::string(static_cast<std::size_t>(StepsFromSeconds(seconds)), 'x');
}
std::string Pause(double seconds) {
    return std::string(static_cast<std::size_t>(StepsFromSeconds(seconds)), '.');
}

TEST(DuckerTest, IsDownBeforeTheFirstWordAndBackAfterTheLast) {
    const auto depths = Depths(Pause(1) + Words(1) + Pause(2), 12);
    const auto word = static_cast<std::size_t>(StepsFromSeconds(1));
    EXPECT_EQ(depths[word - Ducker::kAttack - 1], 0);
    EXPECT_NEAR(depths[word - 1], 12, 1e-9);
    const auto last = word + static_cast<std::size_t>(StepsFromSeconds(1)) - 1;
    EXPECT_NEAR(depths[last + Ducker::kHold - 1], 12, 1e-9);
    EXPECT_LT(depths[last + static_cast<std::size_t>(StepsFromSeconds(1.15))], 0.1);
    for (std::size_t step = 1; step < depths.size(); ++step) {
        // Even in decibels: no step steeper than the whole way in the time for it.
        EXPECT_LE(depths[step] - depths[step - 1], 12.0 / Ducker::kAttack + 1e-9);
        EXPECT_LE(depths[step - 1] - depths[step], 12.0 / Ducker::kRelease + 1e-9);
    }
}

TEST(DuckerTest, ShortPausesAreHeldThroughAndLongOnesNot) {
    const auto lowest = [](double pause) {
        const auto depths = Depths(Pause(1) + Words(1) + Pause(pause) + Words(1), 10);
        const auto begin = depths.begin() + StepsFromSeconds(2);
        return *std::min_element(begin, begin + StepsFromSeconds(pause));
    };
    EXPECT_NEAR(lowest(0.3), 10, 1e-9);
    EXPECT_NEAR(lowest(1.4), 10, 1e-9);
    EXPECT_LT(lowest(2.5), 0.1);
}

TEST(DuckerTest, AnExpectedSentenceKeepsTheBedDown) {
    Ducker ducker;
    for (int step = 0; step < 100; ++step) ducker.Step({.stepsToWord = 0, .need = 10});
    for (int step = 0; step < 150; ++step) EXPECT_NEAR(ducker.Step({.isSpeechExpected = true}), 10, 1e-9);
    for (int step = 0; step < 150; ++step) ducker.Step({});
    EXPECT_TRUE(ducker.IsIdle());
    // It lowers nothing by itself.
    EXPECT_EQ(ducker.Step({.isSpeechExpected = true}), 0);
}

TEST(DuckerTest, GoesDeeperWhileNeededAndTellsWhatMatters) {
    Ducker ducker;
    std::vector<double> told;
    const auto steps = [&](int count, const Ducker::View& view) {
        for (int step = 0; step < count; ++step) {
            ducker.Step(view);
            if (const auto change = ducker.TakeChange()) told.push_back(*change);
        }
    };
    steps(100, {.stepsToWord = 0, .need = 6});
    steps(100, {.stepsToWord = 0, .need = 14});
    steps(100, {.stepsToWord = 0, .need = 3});  // not up again within the words
    EXPECT_NEAR(ducker.Depth(), 14, 1e-9);
    steps(300, {});
    EXPECT_EQ(told, (std::vector<double>{6, 14, 0}));
    // Nor does it plunge where a word comes suddenly.
    Ducker surprised;
    for (int step = 0; step < 20; ++step) {
        const double before = surprised.Depth();
        EXPECT_LE(surprised.Step({.stepsToWord = step % 2, .need = 15}) - before,
                  15.0 / Ducker::kAttack + 1e-9);
    }
    // A bed that begins under speech is down at once.
    EXPECT_NEAR(ducker.Step({.stepsToWord = 0, .need = 9, .isBedNew = true}), 9, 1e-9);
    // A sentence waits only as long as the bed needs.
    EXPECT_EQ(Ducker::LeadIn({.stepsToWord = 6, .isBedThere = true}), Ducker::kAttack - 6);
    EXPECT_EQ(Ducker::LeadIn({.stepsToWord = 6}), 0);
    EXPECT_EQ(Ducker::LeadIn({.stepsToWord = Ducker::kAttack, .isBedThere = true}), 0);
}

}  // namespace
}  // namespace sorakaze::sound::testing
