// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The desk in the engine. Music is on the left and speech on the right, so that each is seen under the other.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>

#include "sound/desk/OutputStage.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

constexpr double kTarget = -16;
constexpr std::size_t kSecond = kSampleRate;

/// Words: noise in the band of speech, a fifth of a second each, with pauses of a tenth; on the right.
Samples Speech(double seconds, float level) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> noise(-1, 1);
    Samples samples(static_cast<std::size_t>(seconds * kSampleRate) * kChannels);
    float smooth = 0;
    for (std::size_t i = 0; i < samples.size() / kChannels; ++i) {
        smooth += 0.3f * (noise(random) - smooth);
        samples[i * kChannels + 1] = i % 14400 < 9600 ? smooth * level : 0.0f;
    }
    return samples;
}

Samples Left(Samples samples) {
    for (std::size_t i = 1; i < samples.size(); i += kChannels) samples[i] = 0;
    return samples;
}

double Rms(std::span<const float> samples, std::size_t begin, std::size_t end) {
    double sum = 0;
    for (std::size_t i = begin; i < end; ++i) sum += double{samples[i]} * double{samples[i]};
    return 10 * std::log10(std::max(sum / static_cast<double>(end - begin), 1e-20));
}

class DeskTest : public ::testing::Test {
  protected:
    DeskTest() { engine_.UseDesk(kTarget); }

    std::shared_ptr<Voice> Open(const std::string& name, const Samples& samples, Bus bus) {
        WriteSound(folder_ / name, samples);
        auto voice = engine_.Open(folder_ / name, bus);
        if (bus == Bus::Music)
            voice->SetLevel(engine_.LevelOfMusic(folder_ / name, Frames{1 << 30}, std::nullopt));
        return voice;
    }
    Samples Mix(std::size_t frames) {
        Samples mixed = testing::Mix(engine_, frames);
        all_.insert(all_.end(), mixed.begin(), mixed.end());
        return mixed;
    }

    ScratchFolder folder_;
    MixingEngine engine_{MixingMode::Offline};
    Samples all_;  ///< what was mixed
};

TEST_F(DeskTest, MusicGoesDownForTheWordsAndComesBack) {
    const auto music = Open("music.wav", Left(Sine(997, 20 * kSecond, 0.3f)), Bus::Music);
    const auto speech = Open("speech.wav", Speech(3.0, 0.4f), Bus::Speech);
    music->Start();
    Mix(5 * kSecond);
    speech->Start();
    EXPECT_TRUE(speech->IsPlaying());
    Mix(8 * kSecond);
    EXPECT_FALSE(speech->IsPlaying());
    EXPECT_EQ(speech->Position(), Frames{3 * kSecond});

    const Samples left = Channel(all_, 0), right = Channel(all_, 1);
    const double before = Rms(left, 2 * kSecond, 4 * kSecond);
    std::size_t word = 5 * kSecond;
    while (std::fabs(right[word]) < 0.001f) ++word;
    const std::size_t lastWord = word + 3 * kSecond - 4800;
    EXPECT_NEAR(static_cast<double>(word - 5 * kSecond) / kSecond, 0.3, 0.02);  // the lead-in
    const double under = Rms(left, word, lastWord);
    EXPECT_NEAR(Rms(left, word, word + 4800), under, 0.1) << "complete before the first word";
    EXPECT_GE(Rms(right, word, lastWord) - under, 10) << "speech over music";
    EXPECT_GE(before - under, 1);
    EXPECT_NEAR(Rms(left, lastWord + kSecond * 12 / 10, lastWord + 2 * kSecond), before, 0.1) << "back";

    const auto ducks = engine_.TakeDucks();
    ASSERT_EQ(ducks.size(), 2u);
    EXPECT_NEAR(ducks[0], before - under, 0.6);
    EXPECT_EQ(ducks[1], 0);
    EXPECT_TRUE(engine_.TakeDucks().empty());

    // No click: besides the tone there is nothing above 2 kHz, in any stretch.
    for (std::size_t begin = 4 * kSecond; begin + 4800 < 10 * kSecond; begin += 2400) {
        double rest = 0;
        for (std::size_t i = begin + 2; i < begin + 4800; ++i) {
            // Takes a tone of 997 Hz away, whatever its amplitude and phase.
            const double turn = 2 * std::cos(2 * std::numbers::pi * 997 / kSampleRate);
            rest = std::max(rest, std::fabs(left[i] - turn * left[i - 1] + left[i - 2]));
        }
        EXPECT_LT(rest, 2e-4) << begin;  // the writer's 16 bits alone give 6e-5
    }
}

TEST_F(DeskTest, AShortSentenceThatWasExpectedKeepsTheMusicDownNoLonger) {
    const auto music = Open("music.wav", Left(Sine(997, 20 * kSecond, 0.3f)), Bus::Music);
    const auto speech = Open("speech.wav", Speech(0.4, 0.4f), Bus::Speech);
    music->Start();
    Mix(2 * kSecond);
    engine_.ExpectSpeech();
    speech->Start();
    while (speech->IsPlaying()) Mix(800);
    const auto end = static_cast<std::size_t>(engine_.Mixed().count);
    Mix(2 * kSecond);
    const Samples left = Channel(all_, 0);
    EXPECT_LT(Rms(left, end - 9600, end), Rms(left, kSecond, 2 * kSecond) - 3);
    EXPECT_NEAR(Rms(left, end + kSecond * 12 / 10, end + 2 * kSecond), Rms(left, kSecond, 2 * kSecond), 0.1);
}

TEST_F(DeskTest, TheShortestSoundsHaveTheirLevel) {
    for (const std::size_t frames : {1u, 3000u, 9000u, 40000u}) {
        const auto voice = Open(std::to_string(frames) + ".wav", Sine(1000, frames, 0.5f), Bus::Effects);
        ASSERT_TRUE(voice) << frames;
        voice->Start();
        Mix(kSecond);
        EXPECT_EQ(voice->Position(), Frames{static_cast<std::int64_t>(frames)});
    }
    EXPECT_TRUE(engine_.TakeFailures().empty());
}

TEST_F(DeskTest, SpeechAloneStartsAtOnceAndSpeechThatIsStoppedIsGone) {
    const auto speech = Open("speech.wav", Speech(1.0, 0.4f), Bus::Speech);
    speech->Start();
    Mix(kSecond);
    EXPECT_EQ(speech->Position(), Frames{kSecond});
    EXPECT_TRUE(engine_.TakeDucks().empty());
    const auto stopped = Open("stopped.wav", Speech(1.0, 0.4f), Bus::Speech);
    stopped->Start();
    stopped->Stop();
    const auto dropped = Open("dropped.wav", Speech(1.0, 0.4f), Bus::Speech);
    dropped->Start();
    Mix(8000);
    dropped->Stop();
    Mix(8000);
    EXPECT_EQ(Peak(Mix(kSecond)), 0.0f);
    EXPECT_EQ(engine_.Sounding(), 0);
}

TEST_F(DeskTest, SomebodyElsesSpeechLowersTheMusicToo) {
    const auto music = Open("music.wav", Left(Sine(997, 20 * kSecond, 0.3f)), Bus::Music);
    music->Start();
    Mix(2 * kSecond);
    engine_.SetOutsideSpeech(true);
    Mix(2 * kSecond);
    engine_.SetOutsideSpeech(false);
    Mix(2 * kSecond);
    const Samples left = Channel(all_, 0);
    const double before = Rms(left, kSecond, 2 * kSecond);
    EXPECT_LE(Rms(left, 3 * kSecond, 4 * kSecond), before - 6);
    EXPECT_NEAR(Rms(left, kSecond * 53 / 10, 6 * kSecond), before, 0.1);
}

TEST(DeskEngine, TheSameShowInOtherBlocksIsTheSame) {
    const ScratchFolder folder;
    WriteSound(folder / "music.wav", Sine(440, 8 * kSecond, 0.5f));
    WriteSound(folder / "speech.wav", Speech(2, 0.5f));
    const auto render = [&](std::size_t block) {
        MixingEngine engine(MixingMode::Offline);
        engine.UseDesk(kTarget);
        const auto music = engine.Open(folder / "music.wav", Bus::Music);
        const auto speech = engine.Open(folder / "speech.wav", Bus::Speech);
        music->Start();
        Samples out(40 * kSecond * kChannels);
        const auto mixUntil = [&](std::size_t frame) {
            while (static_cast<std::size_t>(engine.Mixed().count) < frame) {
                const auto done = static_cast<std::size_t>(engine.Mixed().count);
                engine.Mix(
                    std::span(out).subspan(done * kChannels, std::min(block, frame - done) * kChannels));
            }
        };
        mixUntil(kSecond);
        speech->Start();
        mixUntil(5 * kSecond);
        music->FadeOut(FramesFromSeconds(2));
        mixUntil(8 * kSecond);
        // A silence in which the mixing of whole blocks is left out, and then what the output stage must
        // hold.
        mixUntil(25 * kSecond);
        std::vector<std::shared_ptr<Voice>> loud;
        for (int i = 0; i < 4; ++i) loud.push_back(engine.Open(folder / "music.wav", Bus::Effects));
        for (const auto& voice : loud) voice->Start();
        mixUntil(33 * kSecond);
        return out;
    };
    const Samples first = render(800);
    EXPECT_EQ(first, render(137));
    EXPECT_EQ(first, render(2048));
    // The fade: -6 dB after a quarter of its time, and silence at its end.
    const Samples left = Channel(first, 0);
    const double full = Rms(left, kSecond * 45 / 10, kSecond * 49 / 10);
    EXPECT_NEAR(Rms(left, kSecond * 5475 / 1000, kSecond * 5525 / 1000) - full, -6, 0.7);
    EXPECT_LT(Rms(left, kSecond * 69 / 10, kSecond * 7), -42);
    EXPECT_EQ(Peak(std::span(left).subspan(kSecond * 71 / 10, 17 * kSecond)), 0.0f);
    EXPECT_NEAR(Peak(left), OutputStage::kCeiling, 0.002f) << "the ceiling";
}

TEST(DeskEngine, ASoundThatEndsEarlyHasEndedInEveryRespect) {
    const ScratchFolder folder;
    WriteSound(folder / "level.wav", Constant(0.3f, 10 * kSecond));
    MixingEngine engine(MixingMode::Offline);
    engine.UseDesk(kTarget);
    const auto voice = engine.Open(folder / "level.wav", Bus::Music);
    voice->Start();
    Mix(engine, kSecond);
    voice->EndAt(Frames{3 * kSecond}, Frames{kSecond});
    Mix(engine, 2 * kSecond - 800);
    EXPECT_TRUE(voice->IsPlaying());
    Mix(engine, 1600);
    EXPECT_FALSE(voice->IsPlaying());
    EXPECT_EQ(voice->Position(), Frames{3 * kSecond});
    EXPECT_EQ(engine.Sounding(), 0);
    EXPECT_TRUE(engine.TakeFailures().empty());
    Mix(engine, 4800);
    EXPECT_EQ(Peak(Mix(engine, 4800)), 0.0f);
}

}  // namespace
}  // namespace sorakaze::sound::testing
