// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The limiter, seen at the final output: the range is never left, and what stays below the ceiling is not
// touched.
#include <gtest/gtest.h>

#include <random>

#include "sound/Limiter.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

constexpr std::ptrdiff_t kLatency = std::ptrdiff_t{Limiter::kLatency} * kChannels;  // in samples

TEST(Limiter, ChangesNoBitBelowTheCeilingAndHoldsEveryPeakDown) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-Limiter::kCeiling, Limiter::kCeiling);
    Samples noise(2 * 100'000);
    for (float& sample : noise) sample = level(random);
    for (const std::size_t block : {1u, 240u, 241u, 1024u}) {
        const Samples out = Pass<Limiter>(noise, block);
        EXPECT_EQ(Peak(std::span(out).first(kLatency)), 0.0f);
        EXPECT_TRUE(std::equal(noise.begin(), noise.end() - kLatency, out.begin() + kLatency));
    }
    // Quiet and loud stretches, with single spikes up to 40 dB above full scale.
    constexpr float kLoudness[] = {0.2f, 1.5f, 8.0f};
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] *= i % 4001 == 0 ? 100.0f : kLoudness[(i / 5000) % 3];
    const Samples out = Pass<Limiter>(noise);
    EXPECT_LE(Peak(out), 1.0f);
    EXPECT_GT(Peak(out), 0.99f);
    EXPECT_EQ(out, Pass<Limiter>(noise, 75)) << "the size of the blocks is of no account";
}

TEST(Limiter, TurnsASustainedToneDownCleanlyAndLetsGoAgain) {
    constexpr std::ptrdiff_t kSecond = kSampleRate * kChannels;
    Samples sound = Sine(1000, 2 * kSampleRate, 1.6f);
    const Samples quiet = Sine(1000, 3 * kSampleRate, 0.5f);
    sound.insert(sound.end(), quiet.begin(), quiet.end());
    const Samples out = Pass<Limiter>(sound);
    const Tone tone = MeasureTone(Channel(std::span(out).subspan(kSecond, kSecond / 2), 0), 1000);
    EXPECT_NEAR(tone.amplitude, 1.0, 0.01);
    EXPECT_GT(tone.purity, 50);
    EXPECT_TRUE(std::equal(sound.end() - kSecond, sound.end() - kLatency, out.end() - kSecond + kLatency))
        << "two seconds later nothing is left of it";
}

}  // namespace
}  // namespace sorakaze::sound::testing
