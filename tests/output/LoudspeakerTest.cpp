// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "app/output/Loudspeaker.h"
#include "tests/output/OutputTesting.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::output {
namespace {

using namespace sound::testing;
using namespace output::testing;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(Loudspeaker, WithoutADeviceTheShowGoesOnInTrueTime) {
    for (const char* driver : {"dummy", "nonsense"}) {
        SCOPED_TRACE(driver);
        const Variable variable("SDL_AUDIODRIVER", driver);
        sound::MixingEngine engine(sound::Reading::RealTime);
        const Loudspeaker loudspeaker(engine);
        EXPECT_TRUE(MixesInTrueTime(engine));
        EXPECT_FALSE(loudspeaker.IsAudible());
        EXPECT_THAT(loudspeaker.Description(), StartsWith("no sound device: "));
        EXPECT_THAT(loudspeaker.Description(), HasSubstr(driver));
        EXPECT_EQ(loudspeaker.Underruns(), 0u);
    }
}

TEST(Loudspeaker, EndsAtOnceAndLeavesTheSignalsAlone) {
    const Variable variable("SDL_AUDIODRIVER", "dummy");
    for (int i = 0; i < 3; ++i) {
        sound::MixingEngine engine(sound::Reading::RealTime);
        const Loudspeaker loudspeaker(engine);
        if (i < 2) continue;
        EXPECT_TRUE(Eventually([&] { return engine.Mixed().count > 0; }));
    }
    for (const int number : {SIGINT, SIGTERM}) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        EXPECT_EQ(action.sa_handler, SIG_DFL);
    }
}

TEST(Loudspeaker, TheDeviceGetsWhatIsMixedAndAFadeAtTheEnd) {
    const ScratchFolder scratch;
    const auto heard = scratch / "heard.raw";
    const Variable driver("SDL_AUDIODRIVER", "disk");
    const Variable file("SDL_DISKAUDIOFILE", heard);
    WriteSound(scratch / "tone.wav", Sine(440, 60 * sound::kSampleRate, 0.5f));
    {
        sound::MixingEngine engine(sound::Reading::RealTime);
        const auto voice = engine.Open(scratch / "tone.wav");
        ASSERT_TRUE(voice);
        // From its first frame on, although it starts before the device is open.
        voice->Start();
        const Loudspeaker loudspeaker(engine);
        ASSERT_TRUE(Eventually([&] { return voice->Position().count > sound::kSampleRate; }));
        EXPECT_TRUE(loudspeaker.IsAudible());
        EXPECT_THAT(loudspeaker.Description(), StartsWith("disk"));
    }
    const Samples left = Channel(ReadSamples(heard), 0);
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
    EXPECT_GT(left.end() - end, 0) << "silence behind the fade";
}

}  // namespace
}  // namespace sorakaze::output
