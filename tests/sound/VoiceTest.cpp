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
    std::shared_ptr<Voice> Open(std::size_t frames, float level = kLevel) {
        const auto file = folder_ / (std::to_string(frames) + "-" + std::to_string(level) + ".wav");
        if (!std::filesystem::exists(file)) WriteSound(file, Constant(level, frames));
        return engine_.Open(file);
    }
    /// The gains of the next `frames` frames of the one voice, by its left channel. The limiter's latency is
    /// made up for by mixing silence ahead once.
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
    EXPECT_FALSE(voice->IsPlaying());
    EXPECT_EQ(Peak(Mix(engine_, 800)), 0.0f);
    voice->Start();
    voice->Start();
    EXPECT_TRUE(voice->IsPlaying());
    EXPECT_EQ(engine_.Sounding(), 1);
    const Samples gains = Gains(2400);
    EXPECT_EQ(gains[latency_ - 1], 0.0f);
    for (std::size_t i = 0; i < 96; ++i)
        EXPECT_NEAR(gains[latency_ + i], static_cast<float>(i + 1) / 96, 1e-5f);
    EXPECT_TRUE(std::all_of(gains.begin() + static_cast<std::ptrdiff_t>(latency_) + 95, gains.end(),
                            [](float gain) { return gain == 1.0f; }));
    EXPECT_EQ(voice->Position(), Frames{2400});
    EXPECT_EQ(engine_.Mixed(), Frames{3200});
}

TEST_F(VoiceTest, GainMovesLinearlyFromWhereItIs) {
    const auto voice = Open(96000);
    voice->SetGain(0.8f, Frames{48000});  // before the start: simply set
    voice->Start();
    EXPECT_FLOAT_EQ(Gains(800 + latency_).back(), 0.8f);

    voice->SetGain(0.2f, Frames{4800});
    Samples gains = Gains(2400 + latency_);
    EXPECT_NEAR(gains[latency_ + 1199], 0.65f, 1e-5f);
    EXPECT_NEAR(gains[latency_ + 2399], 0.5f, 1e-5f);
    const float momentary = 0.8f - 0.6f * static_cast<float>(2400 + latency_) / 4800;
    voice->SetGain(1.0f, Frames{1000});
    gains = Gains(2000);
    for (std::size_t i = 0; i < 1000; ++i)
        EXPECT_NEAR(gains[latency_ + i], momentary + (1 - momentary) * static_cast<float>(i + 1) / 1000,
                    1e-5f);
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
    for (const char* how : {"stop", "drop", "stop in the first ramp", "stop before the first block"}) {
        SCOPED_TRACE(how);
        auto voice = Open(48000);
        voice->Start();
        Samples sound;
        if (how == std::string("stop") || how == std::string("drop")) sound = Mix(engine_, 1600);
        if (how == std::string("stop in the first ramp")) sound = Mix(engine_, 48);
        const Frames before = voice->Position();
        if (how == std::string("drop")) {
            voice.reset();
        } else {
            voice->Stop();
            EXPECT_FALSE(voice->IsPlaying());
            voice->Start();
            EXPECT_FALSE(voice->IsPlaying()) << "stopped for good";
        }
        EXPECT_EQ(engine_.Sounding(), 0);
        const Samples tail = Mix(engine_, 1600);
        sound.insert(sound.end(), tail.begin(), tail.end());
        EXPECT_LE(LargestStep(sound), kShortestRampStep * 1.01f);
        EXPECT_EQ(Peak(std::span(tail).subspan((latency_ + 240) * kChannels)), 0.0f);
        if (voice) {
            EXPECT_LE(voice->Position().count, before.count + 240);
        }
    }
}

TEST_F(VoiceTest, EndsInTheBlockThatMixesItsLastFrame) {
    for (const std::size_t frames : {1u, 799u, 800u, 801u, 8192u, 300'000u}) {
        SCOPED_TRACE(frames);
        const auto voice = Open(frames);
        voice->Start();
        const std::size_t blocks = (frames + 799) / 800;
        Mix(engine_, (blocks - 1) * 800);
        EXPECT_TRUE(voice->IsPlaying());
        Mix(engine_, 800);
        EXPECT_FALSE(voice->IsPlaying());
        EXPECT_EQ(engine_.Sounding(), 0);
        EXPECT_EQ(voice->Position(), Frames{static_cast<std::int64_t>(frames)});
        EXPECT_EQ(voice->Length(), Frames{static_cast<std::int64_t>(frames)});
    }
}

TEST_F(VoiceTest, OutlivesItsEngine) {
    auto engine = std::make_unique<MixingEngine>(Reading::Offline);
    WriteSound(folder_ / "a.wav", Constant(kLevel, 48000));
    const auto started = engine->Open(folder_ / "a.wav");
    const auto opened = engine->Open(folder_ / "a.wav");
    started->Start();
    Mix(*engine, 800);
    engine.reset();
    EXPECT_FALSE(started->IsPlaying());
    opened->Start();
    opened->SetGain(0.5f);
    EXPECT_FALSE(opened->IsPlaying());
    EXPECT_EQ(started->Position(), Frames{800});
}

/// A show in small: voices of several formats start, fade, stop and end.
Samples RenderScript(const ScratchFolder& folder, std::size_t block) {
    MixingEngine engine(Reading::Offline);
    const auto track = engine.Open(folder / "track.mp3");
    const auto jingle = engine.Open(folder / "jingle.flac");
    auto effect = engine.Open(folder / "track.mp3");
    Samples all;
    for (int step = 0; step < 200; ++step) {
        if (step == 5) track->Start();
        if (step == 20) {
            jingle->Start();
            effect->Start();
        }
        if (step >= 50 && step < 120) effect->SetGain(static_cast<float>(119 - step) / 70, Frames{800});
        if (step == 90) track->SetGain(0.3f, Frames{12345});
        if (step == 130) effect.reset();
        if (step == 150) track->Stop();
        const Samples more = Mix(engine, 2400, block);
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

TEST_F(VoiceTest, OfflineMixesAreTheSameBitForBit) {
    Encode(folder_ / "track.mp3", Sine(300, 44100 * 12, 0.9f, 44100), 44100, 2);
    Encode(folder_ / "jingle.flac", Sine(700, 32000 * 3, 0.9f, 32000), 32000, 2);
    const Samples once = RenderScript(folder_, 800);
    EXPECT_GT(Peak(once), 0.9f);
    EXPECT_EQ(once, RenderScript(folder_, 800));
    EXPECT_EQ(once, RenderScript(folder_, 75)) << "the size of the blocks is of no account";
    EXPECT_EQ(once, RenderScript(folder_, 2400));
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
    Samples heard = Mix(engine, kFrames, kFrames);
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
