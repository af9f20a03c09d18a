// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The desk's last stage and its detector, measured by the loudness library.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "sound/desk/OutputStage.h"
#include "tests/sound/LibraryMeter.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

constexpr std::size_t kLatency = OutputStage::kLatency * kChannels;  // in samples
using Sound = std::function<double(std::size_t)>;

double Decibels(double level) {
    return 20 * std::log10(level);
}

double LibraryTruePeak(const Samples& sound) {
    return 20 * std::log10(LibraryMeter(sound).TruePeak());
}

Samples Stereo(const Sound& sound, std::size_t frames) {
    Samples samples;
    for (std::size_t i = 0; i < frames; ++i) {
        const auto value = static_cast<float>(sound(i));
        samples.insert(samples.end(), {value, -0.9f * value});
    }
    return samples;
}

Sound Tone(double hertz, double level, double turn) {
    return [=](std::size_t i) {
        return level * std::sin(2 * std::numbers::pi * (hertz * static_cast<double>(i) / kSampleRate + turn));
    };
}

/// Noise of a spectrum like music's; clipped at `level` times `crest`.
Sound Noise(double level, double crest = 100) {
    return [=, random = std::mt19937(1), last = 0.0](std::size_t) mutable {
        last = 0.85 * last + std::normal_distribution<double>(0, 0.5)(random);
        return level * std::clamp(last, -crest, crest);
    };
}

struct Case {
    std::string name;
    Samples samples;
};
std::vector<Case> TooLoud() {
    std::vector<Case> cases;
    for (const double hertz : {50.0, 997.0, 6000.0, 11990.0, 12000.0, 16000.0, 18000.0, 20000.0})
        for (const double turn : {0.0625, 0.125, 0.2})
            for (const double level : {1.2, 4.0})
                cases.push_back({"sine " + std::to_string(hertz) + " turned " + std::to_string(turn),
                                 Stereo(Tone(hertz, level, turn), kSampleRate / 2)});
    const std::pair<const char*, Sound> others[] = {
        {"square", [](std::size_t i) { return i / 54 % 2 ? 2.0 : -2.0; }},
        {"impulses up to 40 dB", [](std::size_t i) { return i % 4001 == 0 ? std::exp2(i / 6000 % 8) : 0.0; }},
        {"steps", [](std::size_t i) { return i / 3000 % 2 ? 4.0 : -0.9; }},
        {"alternating samples", [](std::size_t i) { return i / 7 % 2 ? 0.8
                                                           : i % 2   ? 1.0
                                                                     : -1.0; }},
        {"noise", Noise(4)},
        {"clipped noise", Noise(2, 0.6)},
        {"bursts",
         [noise = Noise(1)](std::size_t i) mutable { return noise(i) * (i / 4000 % 2 ? 4 : 0.3); }}};
    for (const auto& [name, sound] : others) cases.push_back({name, Stereo(sound, kSampleRate)});
    return cases;
}

TEST(OutputStage, HoldsTheTruePeakOfWhatIsTooLoud) {
    for (const auto& [name, samples] : TooLoud()) {
        SCOPED_TRACE(name);
        const Samples out = Pass<OutputStage>(samples);
        EXPECT_LE(LibraryTruePeak(out), -1.0);
        EXPECT_GT(LibraryTruePeak(out), Decibels(OutputStage::kCeiling) - 0.4) << "no lower than need be";
        EXPECT_LE(Peak(out), 1.0f);
        EXPECT_EQ(out, Pass<OutputStage>(samples, 77)) << "the size of the blocks is of no account";
    }
}

TEST(OutputStage, ChangesNoBitBelowTheCeiling) {
    Samples samples = Stereo(Noise(1), kSampleRate);
    const auto level = static_cast<float>(
        std::pow(10, (Decibels(OutputStage::kCeiling) - 0.1 - LibraryTruePeak(samples)) / 20));
    for (float& sample : samples) sample *= level;
    for (const std::size_t block : {1u, 479u, 1024u}) {
        const Samples out = Pass<OutputStage>(samples, block);
        EXPECT_TRUE(std::equal(samples.begin(), samples.end() - kLatency, out.begin() + kLatency));
    }
}

TEST(OutputStage, TheSlowGainTakesOverFromTheLimiterAndLetsGo) {
    auto stage = std::make_unique<OutputStage>();
    const auto pass = [&](const Samples& samples) {
        Samples out(samples.size());
        for (std::size_t i = 0; i < samples.size(); i += 2 * 480) {
            std::copy_n(&samples[i], 2 * 480, stage->Input(480).begin());
            stage->Process(std::span(out).subspan(i, 2 * 480));
        }
        return out;
    };
    EXPECT_TRUE(stage->IsSilent());
    const Samples out = pass(Stereo(Tone(1000, 1.8, 0), 3 * kSampleRate));
    EXPECT_NEAR(Decibels(stage->Meter().deepest), -6, 1) << "before the slow gain is there";
    EXPECT_LT(stage->Meter().limited.Seconds(), 0.4) << "of three seconds";
    EXPECT_GT(stage->Meter().limited.Seconds(), 0.05);
    // Distortion and steps of the gain would both show here.
    EXPECT_GT(MeasureTone(Channel(std::span(out).last(kSampleRate * kChannels), 0), 1000).purity, 80);

    const auto limited = stage->Meter().limited;
    const Samples quiet = Sine(1000, 12 * kSampleRate, 0.5f);
    const Samples after = pass(quiet);
    EXPECT_EQ(stage->Meter().limited, limited);
    EXPECT_TRUE(std::equal(quiet.end() - 2 * kSampleRate, quiet.end() - kLatency,
                           after.end() - 2 * kSampleRate + kLatency))
        << "nothing is left of it";
    EXPECT_FALSE(stage->IsSilent());
    pass(Constant(0, 480));
    EXPECT_TRUE(stage->IsSilent());
}

TEST(TruePeak, ReadsWhatTheLoudnessLibraryReads) {
    for (const auto& [name, samples] : TooLoud()) {
        SCOPED_TRACE(name);
        TruePeak whole, parts;
        whole.Add(samples);
        for (std::size_t i = 0; i < samples.size(); i += 2 * 1000)
            parts.Add(std::span(samples).subspan(i, std::min<std::size_t>(2 * 1000, samples.size() - i)));
        EXPECT_NEAR(Decibels(whole.Peak()), LibraryTruePeak(samples), 0.2);
        EXPECT_EQ(whole.Peak(), parts.Peak());
    }
    TruePeak end;
    end.Add(Constant(0.5f, 3));
    EXPECT_GE(end.Peak(), 0.5f) << "the last frames count too";
}

}  // namespace
}  // namespace sorakaze::sound::testing
