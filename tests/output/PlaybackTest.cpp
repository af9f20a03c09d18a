// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "app/output/Playback.h"
#include "app/output/TrueTime.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::output {
namespace {

using namespace sound::testing;
using namespace std::chrono_literals;

TEST(Playback, NeverMixesFromTwoThreadsLosesNoFrameAndIsSilentOutOfTurn) {
    sound::MixingEngine engine(sound::Reading::RealTime);
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
        const auto beats = playback.Beats();
        while (playback.Beats() < beats + 3) std::this_thread::yield();
        playback.TakeFromDevice();
        const auto mixed = engine.Mixed();
        for (int i = 0; i < 3; ++i) playback.MixUnheard(scratch);
        ASSERT_EQ((engine.Mixed() - mixed).count, 3 * 64) << "the device mixed out of turn";
    }
    over.store(true);
    device.join();
    EXPECT_GE(heard, 100);
    EXPECT_EQ(loudest, 0.0f);
}

TEST(Playback, SwellsWhenTheDeviceGetsItsTurn) {
    const ScratchFolder scratch;
    WriteSound(scratch / "level.wav", Constant(0.5f, sound::kSampleRate));
    sound::MixingEngine engine(sound::Reading::Offline);
    const auto voice = engine.Open(scratch / "level.wav");
    voice->Start();
    Playback playback(engine);
    Samples buffer(4800 * sound::kChannels);
    playback.MixUnheard(buffer);
    playback.GiveToDevice();
    playback.Render(buffer);
    EXPECT_NEAR(buffer[0], 0.0f, 0.01f);
    EXPECT_LT(LargestStep(buffer), 0.001f);
    EXPECT_NEAR(buffer.back(), 0.5f, 0.001f);
}

TEST(TrueTime, NeverDriftsHoweverLateItIsAskedAndLosesTheTimeOfAStoppedProcess) {
    const TrueTime::Clock::time_point start{1000h};
    TrueTime time(start);
    EXPECT_EQ(time.TakeDue(start - 1s), 0);
    std::int64_t frames = 0;
    auto now = start;
    for (int wake = 0; wake < 100'000; ++wake) {
        EXPECT_EQ(time.TakeDue(time.NextDeadline() - 1us), 0);
        now = time.NextDeadline() + std::chrono::microseconds(wake * 7919 % 90'000);
        frames += time.TakeDue(now) * TrueTime::kBlock;
        const auto exact = (now - start) / 1us * sound::kSampleRate / 1'000'000;
        ASSERT_LE(frames, exact);
        ASSERT_GT(frames, exact - TrueTime::kBlock);
    }
    now = time.NextDeadline() + 1h;
    EXPECT_EQ(time.TakeDue(now), 1);
    EXPECT_EQ(time.NextDeadline(), now + TrueTime::kPeriod);
}

}  // namespace
}  // namespace sorakaze::output
