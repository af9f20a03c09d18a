// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <signal.h>

#include "app/output/Playback.h"
#include "tests/app/output/OutputTesting.h"

namespace sorakaze::output {
namespace {

using namespace sound::testing;
using namespace std::chrono_literals;

TEST(Loudspeaker, WithoutADeviceTheShowGoesOnInRealTimeAndTheSignalsAreLeftAlone) {
    for (const char* driver : {"dummy", "nonsense"}) {
        setenv("SDL_AUDIODRIVER", driver, 1);
        sound::MixingEngine engine(sound::MixingMode::RealTime);
        { const Loudspeaker endsAtOnce(engine); }
        const Loudspeaker loudspeaker(engine);
        EXPECT_TRUE(MixesInRealTime(engine));
        EXPECT_FALSE(loudspeaker.IsAudible());
        EXPECT_NE(loudspeaker.Description().find(driver), std::string::npos);
        EXPECT_EQ(loudspeaker.Underruns(), 0u);
        for (const int number : {SIGINT, SIGTERM}) EXPECT_EQ(signal(number, SIG_DFL), SIG_DFL);
    }
}

TEST(Loudspeaker, TheDeviceGetsWhatIsMixedAndAFadeAtTheEnd) {
    const ScratchFolder scratch;
    setenv("SDL_AUDIODRIVER", "disk", 1);
    setenv("SDL_DISKAUDIOFILE", (scratch / "heard.raw").c_str(), 1);
    WriteSound(scratch / "tone.wav", Sine(440, 60 * sound::kSampleRate, 0.5f));
    {
        sound::MixingEngine engine(sound::MixingMode::RealTime);
        const auto voice = engine.Open(scratch / "tone.wav");
        ASSERT_TRUE(voice);
        // From its first frame on, although it starts before the device is open.
        voice->Start();
        const Loudspeaker loudspeaker(engine);
        ASSERT_TRUE(Eventually([&] { return voice->Position().count > sound::kSampleRate; }));
        EXPECT_TRUE(loudspeaker.IsAudible());
    }
    const Samples left = ReadLeft(scratch / "heard.raw");
    const auto sounds = [](float sample) { return std::fabs(sample) > 0.01f; };
    const auto begin = std::find_if(left.begin(), left.end(), sounds);
    const auto end = std::find_if(left.rbegin(), left.rend(), sounds).base();
    ASSERT_GT(end - begin, sound::kSampleRate);

    const Tone tone = MeasureTone(std::span(begin + 4800, 24000), 440);
    EXPECT_NEAR(tone.amplitude, 0.5, 0.01);
    EXPECT_GT(tone.purity, 60);
    const double steepest = 0.5 * 2 * std::numbers::pi * 440 / sound::kSampleRate;
    for (std::size_t i = 1; i < left.size(); ++i)
        ASSERT_LT(std::fabs(left[i] - left[i - 1]), 1.05 * steepest) << "a click at frame " << i;
    EXPECT_NEAR(MeasureTone(std::span(end - 2400 - 480, 960), 440).amplitude, 0.25, 0.05)
        << "halfway down the fade";
    EXPECT_GT(left.end() - end, 0) << "silence after the fade";
}

TEST(Playback, NeverMixesFromTwoThreadsLosesNoFrameAndIsSilentOutOfTurn) {
    sound::MixingEngine engine(sound::MixingMode::RealTime);
    Playback playback(engine);
    std::atomic<bool> over{false};
    std::int64_t heard = 0;
    float loudest = 0;
    std::thread device([&] {
        Samples buffer(64 * sound::kChannels);
        while (!over.load()) {
            const auto before = engine.Mixed();
            std::fill(buffer.begin(), buffer.end(), 1.0f);
            playback.Render(buffer);
            loudest = std::max(loudest, Peak(buffer));
            heard += (engine.Mixed() - before).count == 64;
        }
    });
    Samples scratch(64 * sound::kChannels);
    for (int turn = 0; turn < 100; ++turn) {
        playback.GiveToDevice();
        const auto callbacks = playback.CallbackCount();
        while (playback.CallbackCount() < callbacks + 3) std::this_thread::yield();
        playback.TakeFromDevice();
        const auto mixed = engine.Mixed();
        for (int i = 0; i < 3; ++i) playback.MixSilently(scratch);
        ASSERT_EQ((engine.Mixed() - mixed).count, 3 * 64) << "the device mixed out of turn";
    }
    over.store(true);
    device.join();
    EXPECT_GE(heard, 100);
    EXPECT_EQ(loudest, 0.0f);
}

TEST(Playback, FadesInWhenTheDeviceGetsItsTurn) {
    const ScratchFolder scratch;
    WriteSound(scratch / "level.wav", Constant(0.5f, sound::kSampleRate));
    sound::MixingEngine engine(sound::MixingMode::Offline);
    const auto voice = engine.Open(scratch / "level.wav");
    voice->Start();
    Playback playback(engine);
    Samples buffer(4800 * sound::kChannels);
    playback.MixSilently(buffer);
    playback.GiveToDevice();
    playback.Render(buffer);
    EXPECT_NEAR(buffer[0], 0.0f, 0.01f);
    EXPECT_LT(LargestStep(buffer), 0.001f);
    EXPECT_NEAR(buffer.back(), 0.5f, 0.001f);
}

TEST(SilentClock, NeverDriftsHoweverLateItIsAskedAndLosesTheTimeOfAStoppedProcess) {
    const SilentClock::Clock::time_point start{1000h};
    SilentClock time(start);
    EXPECT_EQ(time.TakeDueBlocks(start - 1s), 0);
    std::int64_t frames = 0;
    auto now = start;
    for (int wake = 0; wake < 100'000; ++wake) {
        EXPECT_EQ(time.TakeDueBlocks(time.NextDeadline() - 1us), 0);
        now = time.NextDeadline() + std::chrono::microseconds(wake * 7919 % 90'000);
        frames += time.TakeDueBlocks(now) * SilentClock::kBlock;
        const auto exact = (now - start) / 1us * sound::kSampleRate / 1'000'000;
        ASSERT_LE(frames, exact);
        ASSERT_GT(frames, exact - SilentClock::kBlock);
    }
    now = time.NextDeadline() + 1h;
    EXPECT_EQ(time.TakeDueBlocks(now), 1);
    EXPECT_EQ(time.NextDeadline(), now + SilentClock::kPeriod);
}

}  // namespace
}  // namespace sorakaze::output
