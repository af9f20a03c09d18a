// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Voices in the mix: starts, stops, gains and ends, to the frame. Constant signals show the gain itself.
// And many threads that command voices while one mixes: for the thread sanitizer, and for what must hold
// whatever the order.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <random>
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
    MixingEngine engine_{MixingMode::Offline};
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
    constexpr std::pair<std::size_t, bool> kCases[] = {{1600, false}, {1600, true}, {48, false}, {0, false}};
    for (const auto& [after, drop] : kCases) {  // frames
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
    auto engine = std::make_unique<MixingEngine>(MixingMode::Offline);
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
    MixingEngine engine(MixingMode::RealTime);
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

/// Opens, starts, fades, stops and drops voices, some of them shared with the other threads.
void Command(MixingEngine& engine, const ScratchFolder& folder, Voice& shared, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::shared_ptr<Voice>> voices;
    for (int i = 0; i < 150; ++i) {
        const auto what = random() % 6;
        if (what < 2 || voices.empty()) {
            voices.push_back(engine.Open(folder / (random() % 2 ? "short.wav" : "long.mp3")));
            voices.back()->SetGain(0.5f);
            voices.back()->Start();
        } else if (what == 2) {
            voices.erase(voices.begin());
        } else if (what == 3) {
            voices.back()->Stop();
        } else if (what == 4) {
            shared.Start();
            shared.SetGain(static_cast<float>(random() % 100) / 100,
                           Frames{static_cast<int>(random() % 5000)});
        } else {
            EXPECT_GE(voices.front()->Position().count, 0);
            voices.front()->IsPlaying();
            EXPECT_GE(engine.Sounding(), 0);
        }
    }
    if (seed == 1) shared.Stop();
}

TEST(Concurrency, CommandsAgainstAMix) {
    const ScratchFolder folder;
    WriteSound(folder / "short.wav", Sine(500, 3000, 0.9f));
    WriteSound(folder / "long.mp3", Sine(700, 10 * kSampleRate, 0.9f));
    for (const MixingMode mode : {MixingMode::RealTime, MixingMode::Offline}) {
        MixingEngine engine(mode);
        const auto shared = engine.Open(folder / "long.mp3");
        std::atomic<bool> done{false};
        std::jthread mixing([&] {
            while (!done) EXPECT_LE(Peak(Mix(engine, 800)), 1.0f);
        });
        std::vector<std::jthread> commanding;
        for (unsigned seed = 1; seed <= 3; ++seed)
            commanding.emplace_back([&, seed] { Command(engine, folder, *shared, seed); });
        commanding.clear();
        done = true;
        mixing.join();
        EXPECT_EQ(engine.Sounding(), 0) << "dropped voices sound no more";
        Mix(engine, 800);
        EXPECT_EQ(Peak(Mix(engine, 800)), 0.0f);
    }
}

}  // namespace
}  // namespace sorakaze::sound::testing
