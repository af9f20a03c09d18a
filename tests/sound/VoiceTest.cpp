// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Voices in the mix: starts, stops, gains and ends, to the frame. Constant signals show the gain itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>

#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

constexpr float kLevel = 0.5f;
constexpr float kShortestRampStep = kLevel / 96;  // of the ramp at a voice's start

class VoiceTest : public ::testing::Test {
  protected:
    std::shared_ptr<Voice> Open(std::size_t frames) {
        WriteSound(folder_ / "level.wav", Constant(kLevel, frames));
        return engine_.Open(folder_ / "level.wav");
    }
    /// The gains of the next `frames` frames of the one voice, by its left channel.
    Samples Gains(std::size_t frames) {
        Samples gains = Channel(Mix(engine_, frames), 0);
        for (float& gain : gains) gain /= kLevel;
        return gains;
    }

    ScratchFolder folder_;
    MixingEngine engine_{Reading::Offline};
    const std::size_t latency_ = static_cast<std::size_t>(engine_.Latency().count);
};

TEST_F(VoiceTest, StartsWithAShortRampAndIsUntouchedBehindIt) {
    const auto voice = Open(48000);
    EXPECT_EQ(Peak(Mix(engine_, 800)), 0.0f);
    voice->Start();
    voice->Start();
    const Samples gains = Gains(2400);
    EXPECT_EQ(gains[latency_ - 1], 0.0f);
    for (std::size_t i = 0; i + latency_ < gains.size(); ++i)
        EXPECT_NEAR(gains[latency_ + i], std::min(1.0f, static_cast<float>(i + 1) / 96), i < 95 ? 1e-5f : 0);
    EXPECT_EQ(engine_.Sounding(), 1);
    EXPECT_EQ(voice->Position(), Frames{2400});
    EXPECT_EQ(engine_.Mixed(), Frames{3200});
}

TEST_F(VoiceTest, GainMovesLinearlyFromWhereItIs) {
    const auto voice = Open(96000);
    voice->SetGain(0.8f, Frames{48000});  // before the start: simply set
    voice->Start();
    EXPECT_FLOAT_EQ(Gains(800 + latency_).back(), 0.8f);

    voice->SetGain(0.2f, Frames{4800});
    EXPECT_NEAR(Gains(2400 + latency_).back(), 0.5f, 1e-5f);
    const float momentary = 0.8f - 0.6f * static_cast<float>(2400 + latency_) / 4800;
    voice->SetGain(1.0f, Frames{1000});
    Samples gains = Gains(2000);
    EXPECT_NEAR(gains[latency_ + 499], (momentary + 1) / 2, 1e-5f);
    EXPECT_EQ(gains[latency_ + 1000], 1.0f);

    voice->SetGain(0.0f);  // at once means the shortest ramp
    gains = Gains(800);
    EXPECT_NEAR(gains[latency_ + 119], 0.5f, 1e-5f);
    EXPECT_EQ(gains[latency_ + 239], 0.0f);
    EXPECT_TRUE(voice->IsPlaying()) << "a silent voice still plays";

    voice->SetGain(std::nanf(""));
    voice->SetGain(17.0f);
    EXPECT_EQ(Gains(800).back(), 1.0f) << "gains keep to the range";
}

TEST_F(VoiceTest, StopsAndDropsWithoutAClick) {
    const struct {
        std::size_t after;  ///< frames
        bool drop;
    } cases[] = {{1600, false}, {1600, true}, {48, false}, {0, false}};
    for (const auto& [after, drop] : cases) {
        SCOPED_TRACE(after);
        auto voice = Open(48000);
        voice->Start();
        Samples sound = Mix(engine_, after);
        if (drop) {
            voice.reset();
        } else {
            voice->Stop();
            voice->Start();
            EXPECT_FALSE(voice->IsPlaying()) << "stopped for good";
        }
        EXPECT_EQ(engine_.Sounding(), 0);
        const Samples tail = Mix(engine_, 1600);
        sound.insert(sound.end(), tail.begin(), tail.end());
        EXPECT_LE(LargestStep(sound), kShortestRampStep * 1.01f);
        EXPECT_EQ(Peak(std::span(tail).subspan((latency_ + 240) * kChannels)), 0.0f);
    }
}

TEST_F(VoiceTest, EndsInTheBlockThatMixesItsLastFrame) {
    for (const std::size_t frames : {1u, 799u, 800u, 801u, 300'000u}) {
        SCOPED_TRACE(frames);
        const auto voice = Open(frames);
        voice->Start();
        Mix(engine_, (frames - 1) / 800 * 800);
        EXPECT_TRUE(voice->IsPlaying());
        Mix(engine_, 800);
        EXPECT_FALSE(voice->IsPlaying());
        EXPECT_EQ(engine_.Sounding(), 0);
        EXPECT_EQ(voice->Position(), Frames{static_cast<std::int64_t>(frames)});
        EXPECT_EQ(voice->Length(), voice->Position());
    }
}

TEST_F(VoiceTest, OutlivesItsEngine) {
    auto engine = std::make_unique<MixingEngine>(Reading::Offline);
    WriteSound(folder_ / "a.wav", Constant(kLevel, 48000));
    const auto started = engine->Open(folder_ / "a.wav"), opened = engine->Open(folder_ / "a.wav");
    started->Start();
    Mix(*engine, 800);
    engine.reset();
    opened->Start();
    opened->SetGain(0.5f);
    EXPECT_FALSE(started->IsPlaying() || opened->IsPlaying());
    EXPECT_EQ(started->Position(), Frames{800});
}

TEST_F(VoiceTest, RealTimeMixingNeverWaitsAndLosesNoFrame) {
    constexpr std::size_t kFrames = 12 * kSampleRate;
    Samples sound = Constant(kLevel, kFrames);
    for (std::size_t i = 0; i < 2000; ++i) sound[sound.size() - 1 - i] *= static_cast<float>(i) / 2000;
    WriteSound(folder_ / "long.wav", sound);
    MixingEngine engine(Reading::RealTime);
    const auto voice = engine.Open(folder_ / "long.wav");
    voice->Start();
    // Twelve seconds at once are more than a ring holds, so a gap is certain; then block after block, far
    // faster than the workers look after a ring. Gaps begin and end softly.
    Samples heard(kFrames * kChannels);
    engine.Mix(heard);
    EXPECT_GE(engine.Underruns(), 1u);
    float largestStep = LargestStep(heard);
    while (voice->IsPlaying()) {
        heard.erase(heard.begin(), heard.end() - kChannels);
        const Samples block = Mix(engine, 800);
        heard.insert(heard.end(), block.begin(), block.end());
        largestStep = std::max(largestStep, LargestStep(heard));
        std::this_thread::yield();
    }
    EXPECT_EQ(voice->Position(), Frames{kFrames});
    EXPECT_LE(largestStep, kShortestRampStep * 1.01f);
}

}  // namespace
}  // namespace sorakaze::sound::testing
