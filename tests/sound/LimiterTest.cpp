// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The limiter, seen at the final output: the range is never left, and what stays below the ceiling is not
// touched.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "app/runtime/sound/Limiter.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

/// Passes `samples` through a limiter in blocks of `block` frames; what comes out is as long, the latency
/// included.
Samples Pass(const Samples& samples, std::size_t block = 800) {
    Limiter limiter;
    Samples out(samples.size());
    for (std::size_t at = 0; at < samples.size(); at += block * kChannels) {
        const std::size_t count = std::min(block * kChannels, samples.size() - at);
        std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(at), count,
                    limiter.Input(count / kChannels).begin());
        limiter.Process(std::span(out).subspan(at, count));
    }
    return out;
}

std::ptrdiff_t At(std::size_t frame) {
    return static_cast<std::ptrdiff_t>(frame * kChannels);
}

TEST(Limiter, ChangesNoBitBelowTheCeiling) {
    Samples noise(2 * 20'000);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-Limiter::kCeiling, Limiter::kCeiling);
    for (float& sample : noise) sample = level(random);
    for (const std::size_t block : {1u, 240u, 241u, 800u, 1024u}) {
        const Samples out = Pass(noise, block);
        EXPECT_EQ(Peak(std::span(out).first(Limiter::kLatency * kChannels)), 0.0f);
        EXPECT_TRUE(std::equal(noise.begin(), noise.end() - At(Limiter::kLatency),
                               out.begin() + At(Limiter::kLatency)));
    }
}

TEST(Limiter, HoldsEveryPeakDown) {
    std::mt19937 random(2);
    std::uniform_real_distribution<float> level(-1, 1);
    Samples wild(2 * 100'000);
    for (std::size_t i = 0; i < wild.size(); ++i) {
        // Quiet and loud stretches, with single spikes up to 40 dB above full scale.
        const float loudness = (i / 5000) % 3 == 0 ? 0.2f : (i / 5000) % 3 == 1 ? 1.5f : 8.0f;
        wild[i] = level(random) * (i % 4001 == 0 ? 100.0f : loudness);
    }
    const Samples out = Pass(wild);
    EXPECT_LE(Peak(out), 1.0f);
    EXPECT_GT(Peak(out), 0.99f);
    EXPECT_EQ(out, Pass(wild, 75)) << "the size of the blocks is of no account";
}

TEST(Limiter, TurnsASustainedToneDownCleanlyAndLetsGoAgain) {
    Samples sound = Sine(1000, 2 * kSampleRate, 1.6f);
    const Samples quiet = Sine(1000, 3 * kSampleRate, 0.5f);
    sound.insert(sound.end(), quiet.begin(), quiet.end());
    const Samples out = Pass(sound);
    const Samples held(out.begin() + At(kSampleRate), out.begin() + At(kSampleRate * 3 / 2));
    const Tone tone = MeasureTone(Channel(held, 0), 1000);
    EXPECT_NEAR(tone.amplitude, 1.0, 0.01);
    EXPECT_GT(tone.purity, 50);
    EXPECT_TRUE(std::equal(sound.end() - At(kSampleRate), sound.end() - At(Limiter::kLatency),
                           out.end() - At(kSampleRate - Limiter::kLatency)))
        << "two seconds later nothing is left of it";
}

TEST(Limiter, EightFullScaleVoicesStayInRange) {
    const ScratchFolder folder;
    MixingEngine engine(Reading::Offline);
    std::vector<std::shared_ptr<Voice>> voices;
    for (int i = 0; i < 8; ++i) {
        const auto file = folder / (std::to_string(i) + ".wav");
        WriteSound(file, Sine(100 + 37 * i, kSampleRate, 1.0f));
        voices.push_back(engine.Open(file));
    }
    float peak = 0;
    float step = 0;
    for (std::size_t i = 0; i < 70; ++i) {
        if (i < voices.size()) voices[i]->Start();
        const Samples block = Mix(engine, 800);
        peak = std::max(peak, Peak(block));
        step = std::max(step, LargestStep(block));
    }
    EXPECT_LE(peak, 1.0f);
    EXPECT_GT(peak, 0.95f);
    EXPECT_LT(step, 0.1f);
}

}  // namespace
}  // namespace sorakaze::sound::testing
