// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What is measured of sounds whose loudness is known.
#include <gtest/gtest.h>

#include <limits>
#include <string_view>

#include "sound/measuring/Measurer.h"
#include "sound/measuring/ProgrammeLoudness.h"
#include "tests/sound/LibraryMeter.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

using namespace std::string_view_literals;
constexpr std::size_t kSecond = kSampleRate;
constexpr Frames kNoLimit = kLongestMeasurement;

Measurement Measured(std::span<const float> sound, std::size_t piece = kSecond, Frames limit = kNoLimit) {
    Measurer measurer(limit);
    for (; !sound.empty(); sound = sound.subspan(std::min(piece * kChannels, sound.size())))
        measurer.Add(sound.first(std::min(piece * kChannels, sound.size())));
    return measurer.Finish(true);
}

Samples Joined(std::initializer_list<Samples> parts) {
    Samples all;
    for (const Samples& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// A sine of 1 kHz on both sides is as loud in LUFS as its peak in dBFS.
TEST(Loudness, IsWhatTheLibraryReads) {
    const Samples silence = Constant(0.0f, 5 * kSecond), low = Sine(30, 7 * kSecond, 0.5f);
    const std::pair<const char*, Samples> cases[] = {
        {"low", low},
        {"middle", Sine(500, 4 * kSecond, 0.2f)},
        {"high", Sine(9000, 9 * kSecond, 0.1f)},
        {"a tone that fades in steps, after silence",
         Joined({silence, Sine(1000, 13 * kSecond, 0.5f), Sine(1000, 11 * kSecond, 0.2f), silence,
                 Sine(2000, 15 * kSecond, 0.01f), low})},
        {"one side",
         [] {
             Samples left = Sine(1000, 5 * kSecond, 0.5f);
             for (std::size_t i = 1; i < left.size(); i += kChannels) left[i] = 0;
             return left;
         }()},
        {"silence", silence},
        {"too short", Sine(1000, kSecond / 5, 0.5f)}};
    for (const auto& [name, sound] : cases) {
        SCOPED_TRACE(name);
        const LibraryMeter library(sound);
        ProgrammeLoudness whole, parts;
        whole.Add(sound);
        for (auto rest = std::span(sound); !rest.empty();
             rest = rest.subspan(std::min<std::size_t>(1234, rest.size())))
            parts.Add(rest.first(std::min<std::size_t>(1234, rest.size())));
        whole.Finish();
        parts.Finish();
        EXPECT_NEAR(whole.Integrated(), library.Integrated(), 0.05);
        EXPECT_NEAR(whole.Range(), library.Range(), 0.2);
        EXPECT_EQ(whole.Integrated(), parts.Integrated());
        const auto seconds = Measured(sound).seconds;
        if (seconds.empty()) continue;
        EXPECT_NEAR(seconds.back().part, name == "too short"sv ? -9 : library.Integrated(), 0.05);
        const std::size_t half = (seconds.size() - 1) / 2;
        const auto begun = std::span(sound).first(std::min((half + 1) * kSecond * kChannels, sound.size()));
        if (begun.size() < kSecond) continue;
        EXPECT_NEAR(seconds[half].part, LibraryMeter(begun).Integrated(), 0.05);
    }
}

TEST(Measurer, FollowsTheSoundSecondBySecond) {
    const Samples sound = Joined({Sine(1000, 4 * kSecond, 0.01f), Sine(1000, 4 * kSecond, 0.1f),
                                  Constant(0.0f, 2 * kSecond), Sine(1000, 100, 0.001f)});
    const Measurement m = Measured(sound);
    ASSERT_EQ(m.seconds.size(), 11u);
    for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR(m.seconds[i].loudness, i < 4 ? -40 : -20, 0.3) << i;
    EXPECT_EQ(m.seconds[9].loudness, kSilentLoudness);
    EXPECT_NEAR(m.seconds[3].part, -40, 0.1);
    EXPECT_NEAR(m.seconds.back().part, -20.3, 0.1) << "what is quiet or silent doesn't count";
    EXPECT_NEAR(m.seconds[3].peak, -40, 0.01);
    EXPECT_NEAR(m.seconds.back().peak, -20, 0.01);
    EXPECT_EQ(m.length, Frames{10 * kSampleRate + 100});
    EXPECT_NEAR(static_cast<double>(m.audible.count), 8.0 * kSampleRate, 24);
    EXPECT_TRUE(m.isWhole);
    EXPECT_NEAR(m.speechBand, -23, 0.3);

    for (const std::size_t piece : {1u, 777u, 100'000u}) EXPECT_EQ(Measured(sound, piece), m) << piece;
    const Measurement begun = Measured(sound, 777, {5 * kSampleRate + 10});
    EXPECT_EQ(begun.length, Frames{5 * kSampleRate + 10});
    EXPECT_FALSE(begun.isWhole);
    EXPECT_EQ(begun.seconds[4], m.seconds[4]);
    EXPECT_LT(Measured(Sine(60, 4 * kSecond, 0.1f)).speechBand, -45) << "outside the band of speech";
}

TEST(Measurer, TakesAnySound) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN(), kInf = HUGE_VALF;
    const struct {
        const char* name;
        Samples sound;
        double loudness, peak;
        double slack = 0.2;
    } cases[] = {
        {"nothing", {}, kSilentLoudness, kSilentLoudness},
        {"silence", Constant(0.0f, 3 * kSecond), kSilentLoudness, kSilentLoudness},
        {"below what is audible", Sine(1000, 3 * kSecond, 0.0009f), kSilentLoudness, kSilentLoudness},
        {"one frame", {1.0f, -1.0f}, -37, 0, 8},
        {"a tenth of a second", Sine(1000, kSecond / 10, 0.1f), -26, -20},
        {"half a second", Sine(1000, kSecond / 2, 0.1f), -20, -20},
        {"no numbers", Samples(2 * kSecond * kChannels, kNan), kSilentLoudness, kSilentLoudness},
        {"without bounds", Samples(2 * kSecond * kChannels, -kInf), kSilentLoudness, kSilentLoudness},
        {"huge", Samples(2 * kSecond * kChannels, 3e38f), kSilentLoudness, kSilentLoudness},
        {"louder than any music", Sine(1000, 2 * kSecond, 64.0f), 30, 36.1},
        {"poisoned", Joined({Sine(1000, 2 * kSecond, 0.1f), {kNan, kInf}, Sine(1000, 2 * kSecond, 0.1f)}),
         -20, -20}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const Measurement m = Measured(each.sound);
        EXPECT_EQ(m.length.count, std::ssize(each.sound) / kChannels);
        EXPECT_EQ(UnpackMeasurement(PackMeasurement(m)), m);
        EXPECT_EQ(m.seconds.empty(), each.loudness == double{kSilentLoudness});
        if (m.seconds.empty()) continue;
        EXPECT_NEAR(m.seconds.back().part, each.loudness, each.slack);
        EXPECT_NEAR(m.seconds.back().peak, each.peak, 0.1);
    }
}

TEST(Measurement, OutOfForeignBytesIsCheckedThroughout) {
    const Measurement good = Measured(Sine(1000, 3 * kSecond, 0.1f));
    ASSERT_EQ(UnpackMeasurement(PackMeasurement(good)), good);
    const std::pair<const char*, void (*)(Measurement&)> cases[] = {
        {"no number", [](Measurement& m) { m.seconds[1].loudness = std::nanf(""); }},
        {"infinite", [](Measurement& m) { m.seconds[1].part = HUGE_VALF; }},
        {"too quiet", [](Measurement& m) { m.seconds[1].part = -71; }},
        {"too loud", [](Measurement& m) { m.seconds[2].peak = 96; }},
        {"a peak that comes down", [](Measurement& m) { m.seconds[1].peak -= 3; }},
        {"a second too many", [](Measurement& m) { m.seconds.push_back(m.seconds.back()); }},
        {"longer than its seconds", [](Measurement& m) { m.length.count += kSampleRate; }},
        {"of negative length", [](Measurement& m) { m.length.count = -1, m.seconds.clear(); }},
        {"audible after its end", [](Measurement& m) { m.audible.count = m.length.count + 1; }},
        {"silent with seconds", [](Measurement& m) { m.audible.count = 0; }},
        {"endless", [](Measurement& m) { m.length.count = std::int64_t{1} << 62; }},
        {"no speech band", [](Measurement& m) { m.speechBand = std::nanf(""); }}};
    for (const auto& [name, spoil] : cases) {
        Measurement bad = good;
        spoil(bad);
        EXPECT_EQ(UnpackMeasurement(PackMeasurement(bad)), std::nullopt) << name;
    }
    const std::string packed = PackMeasurement(good);
    for (std::size_t size = 0; size < packed.size(); ++size)
        EXPECT_EQ(UnpackMeasurement(packed.substr(0, size)), std::nullopt) << size;
}

}  // namespace
}  // namespace sorakaze::sound::testing
