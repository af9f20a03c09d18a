// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Levels planned for sounds that are given as their loudness, second by second.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "sound/desk/LevelPlan.h"

namespace sorakaze::sound {
namespace {

constexpr double kTarget = -16;
constexpr Frames kWhole = kLongestMeasurement;

Frames Seconds(double seconds) {
    return {std::llround(seconds * kSampleRate)};
}

std::vector<float> Joined(std::initializer_list<std::vector<float>> parts) {
    std::vector<float> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::vector<float> Level(std::size_t seconds, float loudness) {
    return std::vector<float>(seconds, loudness);
}

/// From one level to the other, evenly in decibels.
std::vector<float> Fall(std::size_t seconds, float from, float to) {
    std::vector<float> levels(seconds);
    for (std::size_t i = 0; i < seconds; ++i)
        levels[i] = from + (to - from) * static_cast<float>(i) / static_cast<float>(seconds - 1);
    return levels;
}

/// A whole sound of these levels, with peaks so far above them. `silence` of its last frames aren't audible.
Measurement Sound(const std::vector<float>& levels, float peakAbove = 10, Frames silence = {}) {
    Measurement m;
    double power = 0, peak = double{kSilentLoudness};
    int count = 0;
    for (const float level : levels) {
        // The gate, simply: what is far below the loudest so far doesn't count.
        const double own = std::pow(10, double{level} / 10);
        if (count > 0 && own > power / count * 100) power = count = 0;
        if (count == 0 || own > power / count / 100) power += own, ++count;
        peak = std::max(peak, double{level + peakAbove});
        m.seconds.push_back(
            {level, static_cast<float>(10 * std::log10(power / count)), static_cast<float>(peak)});
    }
    m.length = Seconds(static_cast<double>(levels.size()));
    m.audible = m.length - silence;
    m.isWhole = true;
    return m;
}

TEST(LevelPlan, GainIsThatOfThePartWithinItsBounds) {
    const Measurement steps = Sound(Joined({Level(30, -12), Level(90, -10)}));
    const struct {
        const char* name;
        Measurement sound;
        Frames part;
        double gain;
    } cases[] = {{"the part that is played", steps, Seconds(30), -4},
                 {"no frame of it", steps, {}, -4},
                 {"more than there is", steps, kWhole, -5.6},
                 {"as loud as masters get", Sound(Level(60, -6)), kWhole, -10},
                 {"a quiet master", Sound(Level(60, -30)), kWhole, 12},
                 {"quiet with high peaks", Sound(Level(60, -24), 23), kWhole, 5},
                 {"with peaks that are too high already", Sound(Level(60, -20), 25), kWhole, 0},
                 {"loud with high peaks", Sound(Level(60, -10), 14), kWhole, -6},
                 {"louder than any", Sound(Level(60, 30)), kWhole, -40},
                 {"a short effect", Sound(Level(1, -26)), kWhole, 10},
                 {"silence", Sound(Level(5, kSilentLoudness)), kWhole, 0},
                 {"nothing", {}, kWhole, 0}};
    for (const auto& each : cases)
        for (const Bus bus : {Bus::Music, Bus::Effects, Bus::Speech})
            EXPECT_NEAR(PlanLevel(each.sound, each.part, kTarget, bus).gainDb, each.gain, 0.1) << each.name;
}

TEST(LevelPlan, AQuietBeginningIsLiftedAndGivenBackBeforeTheBody) {
    const auto after = [](const std::vector<float>& beginning, float peakAbove = 3) {
        return Sound(Joined({beginning, Level(120, -16)}), peakAbove);
    };
    const struct {
        const char* name;
        Measurement sound;
        double lift, over;  ///< dB, and the second at which it has been given back
    } cases[] = {{"loud at once", after({}), 0, 0},
                 {"a little below", after(Level(10, -18)), 0, 0},
                 {"far below", after(Level(20, -30)), 6, 19},
                 {"somewhat below", after(Level(20, -20)), 3.6, 19},
                 {"short", after(Level(4, -30)), 3, 3},
                 {"too short for any", after(Level(1, -30)), 0, 0},
                 {"with one beat", after(Joined({Level(6, -30), {-16}, Level(13, -30)})), 1.4, 19},
                 {"with a beat at its end", after(Joined({Level(18, -30), {-16}, Level(1, -30)})), 6, 17},
                 {"with peaks", after(Level(20, -30), 12), 6, 19},
                 {"without room for more", after(Joined({Level(20, -20)}), 17), 1.6, 19},
                 {"very long", after(Level(100, -30)), 6, 60},
                 {"all of it", Sound(Fall(20, -16, -16.1f)), 0, 0}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const LevelPlan plan = PlanLevel(each.sound, kWhole, kTarget, Bus::Music);
        EXPECT_NEAR(plan.liftDb, each.lift, 0.3);
        if (each.lift > 0)
            EXPECT_NEAR(plan.liftHold.Seconds() + plan.liftDb, each.over, 0.01);
        else
            EXPECT_EQ(plan.liftHold, Frames{});
        EXPECT_EQ(PlanLevel(each.sound, kWhole, kTarget, Bus::Effects).liftDb, 0);
    }
    // The part is as loud as it was meant to be with its lift.
    const Measurement lifted = after(Level(20, -24));
    EXPECT_LT(PlanLevel(lifted, Seconds(40), kTarget, Bus::Music).gainDb,
              PlanLevel(lifted, Seconds(40), kTarget, Bus::Effects).gainDb - 0.3);
    // What is played of it is all beginning, and is brought to the target as a whole.
    const LevelPlan plan = PlanLevel(after(Level(100, -24)), Seconds(30), kTarget, Bus::Music);
    EXPECT_NEAR(plan.gainDb, 8, 0.1);
    EXPECT_EQ(plan.liftDb, 0);
}

TEST(LevelPlan, ASoundEndsWhereItHasFadedAndNowhereElse) {
    const auto with = [](const std::vector<float>& end, double silence = 0) {
        return Sound(Joined({Level(120, -14), end}), 10, Seconds(silence));
    };
    constexpr double kToItsEnd = -1;
    const struct {
        const char* name;
        Measurement sound;
        double end, fade;  ///< seconds after the body's
    } cases[] = {
        {"an end at full level", with({}), kToItsEnd, 0},
        {"silence", with(Level(12, kSilentLoudness), 12), 0.2, 0.2},
        {"hardly any silence", with({}, 0.1), kToItsEnd, 0},
        {"a fade", with(Fall(21, -14, -74 + 4)), 11, 1},
        {"a fade and silence", with(Joined({Fall(21, -14, -70), Level(8, -70)}), 10), 11, 1},
        {"a slow fade", with(Fall(57, -14, -70)), 27, 1},
        {"a fade and the noise of a tape", with(Joined({Fall(8, -14, -56), Level(60, -56)})), 6.5, 0.5},
        {"applause", with(Level(20, -30)), kToItsEnd, 0},
        {"applause that fades", with(Joined({Level(20, -30), Fall(9, -30, -70)})), 24.5, 0.5},
        {"a quiet coda", with(Level(30, -42)), kToItsEnd, 0},
        {"a quiet coda and silence", with(Joined({Level(30, -42), Level(3, -70)}), 2.9), 30.3, 0.2},
        {"an uneven coda", with({-38, -42, -39, -44, -40, -45, -41, -43, -40}), kToItsEnd, 0},
        {"a pause and another song", with(Joined({Level(60, -70), Level(30, -16)})), kToItsEnd, 0},
        {"a last chord that rings", with({-25, -45, -58, -70, -70, -70}, 2), 2.5, 0.5},
        {"a short last chord", with({-25, -45}), kToItsEnd, 0}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const LevelPlan plan = PlanLevel(each.sound, Seconds(60), kTarget, Bus::Music);
        EXPECT_NEAR(plan.endFade.Seconds(), each.fade, 0.001);
        const double end = plan.end ? plan.end->Seconds() - 120 : kToItsEnd;
        EXPECT_NEAR(end, each.end, 0.001);
        Measurement begun = each.sound;
        begun.isWhole = false;
        EXPECT_EQ(PlanLevel(begun, kWhole, kTarget, Bus::Music).end, std::nullopt);
        EXPECT_EQ(PlanLevel(each.sound, kWhole, kTarget, Bus::Speech).end, std::nullopt);
    }
}

TEST(LevelPlan, StaysWithinItsBoundsWhateverWasMeasured) {
    std::mt19937 random(6);
    const auto level = [&] { return std::uniform_real_distribution<float>(kSilentLoudness, 40)(random); };
    for (int i = 0; i < 2000; ++i) {
        Measurement m;
        float peak = kSilentLoudness;
        m.seconds.resize(random() % 100);
        for (auto& second : m.seconds) second = {level(), level(), peak = std::max(peak, level())};
        m.length = Seconds(static_cast<double>(m.seconds.size()));
        m.audible = {std::max<std::int64_t>(m.length.count - random() % 100'000, 1)};
        m.isWhole = true;
        const LevelPlan plan =
            PlanLevel(m, {static_cast<std::int64_t>(random()) - 1000}, kTarget, Bus::Music);
        ASSERT_TRUE(plan.gainDb >= -40 && plan.gainDb <= 12);
        ASSERT_TRUE(plan.liftDb >= 0 && plan.liftDb <= 6);
        ASSERT_GE(plan.liftHold, Frames{});
        if (!plan.end) continue;
        ASSERT_TRUE(*plan.end > Frames{} && *plan.end < m.length);
        ASSERT_TRUE(plan.endFade > Frames{} && plan.endFade <= *plan.end);
    }
}

TEST(LevelPlan, TagsAreBelievedWithinBounds) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN(), kInf = HUGE_VAL;
    const std::pair<double, double> cases[] = {{-16, 0},  {-8, -8}, {-20, 4},  {-30, 6},   {0, -16},
                                               {-114, 0}, {78, 0},  {kNan, 0}, {-kInf, 0}, {kInf, 0}};
    for (const auto& [loudness, gain] : cases)
        EXPECT_DOUBLE_EQ(GainFromTags(loudness, kTarget), gain) << loudness;
}

}  // namespace
}  // namespace sorakaze::sound
