// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Dither by what it is for: the error of the 16-bit samples is noise of the same power whatever the sound is.
#include <gtest/gtest.h>

#include "sound/encoding/Int16Converter.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

constexpr float kUnit = 1.0f / 32768;

std::vector<std::int16_t> Convert(const Samples& samples, Dither dither, std::size_t frames = 10'000) {
    Int16Converter converter(dither);
    std::vector<std::int16_t> result(samples.size());
    for (std::size_t i = 0; i < samples.size(); i += frames * kChannels)
        converter.Convert(std::span(samples).subspan(i, std::min(frames * kChannels, samples.size() - i)),
                          &result[i]);
    return result;
}

Samples Errors(const Samples& samples, Dither dither) {
    const auto converted = Convert(samples, dither);
    Samples errors;
    for (std::size_t i = 0; i < samples.size(); ++i)
        errors.push_back(static_cast<float>(converted[i]) - samples[i] / kUnit);
    return errors;
}

double MeanProduct(const Samples& a, std::size_t first, const Samples& b, std::size_t second) {
    double sum = 0;
    std::size_t count = 0;
    for (; std::max(first, second) < a.size(); first += kChannels, second += kChannels, ++count)
        sum += double{a[first]} * b[second];
    return sum / static_cast<double>(count);
}

TEST(Dither, LeavesNoDistortionOfAQuietTone) {
    constexpr std::size_t kFrames = 8 * kSampleRate;
    const Samples tone = Sine(997, kFrames, 1.036f * kUnit);  // -90 dBFS
    const auto harmonic = [&](Dither dither, int number) {
        return MeasureTone(Channel(Errors(tone, dither), 0), 997.0 * number).amplitude;
    };
    // Of noise with a variance of a quarter, seven deviations.
    const double noise = 7 * std::sqrt(2 * 0.25 * 2 / kFrames);
    for (int number = 1; number <= 9; ++number)
        EXPECT_LT(harmonic(Dither::Triangular, number), noise) << number;
    double undithered = 0;
    for (int number = 3; number <= 9; number += 2)
        undithered = std::max(undithered, harmonic(Dither::None, number));
    EXPECT_GT(undithered, 10 * noise) << "what it is for";
}

TEST(Dither, IsWhiteNoiseOfThePowerOfARandomBitWhateverTheSoundIs) {
    constexpr std::size_t kFrames = 400'000;
    const double deviation = 5 * 0.25 / std::sqrt(kFrames);
    for (const float level : {0.25f, 0.5f, 1.0f, 1000.3f}) {
        SCOPED_TRACE(level);
        const Samples errors = Errors(Constant(level * kUnit, kFrames), Dither::Triangular);
        const Samples ones(errors.size(), 1.0f);
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            EXPECT_NEAR(MeanProduct(errors, channel, ones, channel), 0, 2 * deviation);
            EXPECT_NEAR(MeanProduct(errors, channel, errors, channel), 0.25, 0.005);
        }
        EXPECT_NEAR(MeanProduct(errors, 0, errors, 1), 0, deviation) << "left and right";
        for (const std::size_t later : {1u, 2u, 4u, 512u})
            EXPECT_NEAR(MeanProduct(errors, 0, errors, later * kChannels), 0, deviation) << later;
    }
}

TEST(Dither, RepeatsItselfAndLeavesSilenceAndTheRangeAlone) {
    Samples samples = Sine(1000, 10'000, 1.2f);
    std::fill_n(samples.begin() + 2000, 4000, 0.0f);
    const auto once = Convert(samples, Dither::Triangular);
    EXPECT_EQ(once, Convert(samples, Dither::Triangular, 77)) << "the size of the parts is of no account";
    EXPECT_TRUE(
        std::all_of(once.begin() + 2000, once.begin() + 6000, [](int sample) { return sample == 0; }));
    EXPECT_EQ(*std::ranges::max_element(once), 32767);
    EXPECT_EQ(*std::ranges::min_element(once), -32768);

    for (float& sample : samples) sample /= 2;
    const auto half = Convert(samples, Dither::Triangular);
    const ScratchFolder folder;
    for (const char* name : {"dithered.wav", "dithered.flac"}) {
        const auto writer = SoundFileWriter::Create(folder / name, Dither::Triangular);
        writer->Write(samples);
        writer->Finish();
        const Samples back = DecodeWhole(folder / name);
        ASSERT_EQ(back.size(), half.size());
        const auto same = [](float sample, std::int16_t expected) { return sample == expected * kUnit; };
        EXPECT_TRUE(std::equal(back.begin() + 2000, back.end(), half.begin() + 2000, same)) << name;
    }
}

}  // namespace
}  // namespace sorakaze::sound::testing
