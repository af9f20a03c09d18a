// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <thread>

#include "app/output/Playback.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::output {
namespace {

using namespace sound::testing;

TEST(Playback, NeverMixesFromTwoThreadsAndLosesNoFrame) {
    sound::MixingEngine engine(sound::Reading::RealTime);
    Playback playback(engine);
    std::atomic<bool> over{false};
    std::int64_t heard = 0;
    std::thread device([&] {
        Samples buffer(64 * sound::kChannels);
        while (!over.load()) {
            const auto before = engine.Mixed();
            playback.Render(buffer);
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
}

TEST(Playback, SwellsAtTheStartFadesAtTheEndAndIsSilentOutOfTurn) {
    const ScratchFolder scratch;
    WriteSound(scratch / "level.wav", Constant(0.5f, sound::kSampleRate));
    sound::MixingEngine engine(sound::Reading::Offline);
    const auto voice = engine.Open(scratch / "level.wav");
    ASSERT_TRUE(voice);
    Playback playback(engine);

    voice->Start();
    Samples buffer(9600 * sound::kChannels, 1.0f);
    playback.Render(buffer);
    EXPECT_EQ(Peak(buffer), 0.0f);
    EXPECT_EQ(voice->Position().count, 0);

    // The voice is at its level before the device gets its turn.
    while (voice->Position().count < 4800) playback.MixUnheard(std::span(buffer).first(960));
    playback.GiveToDevice();
    playback.Render(buffer);
    EXPECT_NEAR(buffer[0], 0.0f, 0.01f);
    EXPECT_LT(LargestStep(buffer), 0.001f);
    EXPECT_NEAR(buffer.back(), 0.5f, 0.001f);
    EXPECT_FALSE(playback.HasFaded());

    playback.FadeOut();
    playback.Render(buffer);
    EXPECT_LT(LargestStep(buffer), 0.001f);
    EXPECT_NEAR(buffer[2400 * sound::kChannels], 0.25f, 0.01f);
    EXPECT_EQ(Peak(std::span(buffer).subspan(4800 * sound::kChannels)), 0.0f);
    EXPECT_TRUE(playback.HasFaded());
}

}  // namespace
}  // namespace sorakaze::output
