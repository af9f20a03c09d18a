// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <signal.h>

#include <algorithm>
#include <numbers>

#include "tests/output/OutputTesting.h"

namespace sorakaze::output {
namespace {

using namespace sound::testing;

TEST(Loudspeaker, WithoutADeviceTheShowGoesOnInTrueTimeAndTheSignalsAreLeftAlone) {
    for (const char* driver : {"dummy", "nonsense"}) {
        setenv("SDL_AUDIODRIVER", driver, 1);
        sound::MixingEngine engine(sound::Reading::RealTime);
        { const Loudspeaker endsAtOnce(engine); }
        const Loudspeaker loudspeaker(engine);
        EXPECT_TRUE(MixesInTrueTime(engine));
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
        sound::MixingEngine engine(sound::Reading::RealTime);
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
    EXPECT_GT(left.end() - end, 0) << "silence behind the fade";
}

}  // namespace
}  // namespace sorakaze::output
