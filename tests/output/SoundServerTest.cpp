// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The loudspeaker on a real sound server that comes, dies and hangs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/output/Loudspeaker.h"
#include "tests/output/SoundServer.h"

/// SDL forgets an operation of the server's library (88 bytes) at every change that the server announces.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:pa_xmalloc\n";
}

namespace sorakaze::output {
namespace {

using namespace sound::testing;
using namespace output::testing;
using ::testing::StartsWith;

class OnAServer : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!SoundServer::IsInstalled()) GTEST_SKIP() << "pulseaudio and pulseaudio-utils aren't installed";
        WriteSound(scratch / "tone.wav", Sine(440, 240 * sound::kSampleRate, 0.5f));
        voice = engine.Open(scratch / "tone.wav");
        ASSERT_TRUE(voice);
        voice->Start();
    }

    void ExpectTone() {
        const Samples heard = server.Hear();
        ASSERT_FALSE(heard.empty()) << "nothing is heard";
        const Tone tone = MeasureTone(heard, 440);
        EXPECT_NEAR(tone.amplitude, 0.5, 0.02);
        EXPECT_GT(tone.purity, 50);
    }

    static bool Audible(const Loudspeaker& loudspeaker) {
        return Eventually([&] { return loudspeaker.IsAudible(); });
    }
    static bool Silent(const Loudspeaker& loudspeaker) {
        return Eventually([&] { return !loudspeaker.IsAudible(); });
    }

    const ScratchFolder scratch;
    SoundServer server;
    sound::MixingEngine engine{sound::Reading::RealTime};
    std::shared_ptr<sound::Voice> voice;
};

TEST_F(OnAServer, PlaysOnWhenItDiesAndIsHeardAgainWhenItIsBack) {
    ASSERT_TRUE(server.Start());
    const Loudspeaker loudspeaker(engine);
    ASSERT_TRUE(Audible(loudspeaker));
    EXPECT_EQ(loudspeaker.Description(), "pulseaudio");
    // An idle server asks slowly at first; that is no reason to leave it.
    const auto end = engine.Mixed() + sound::FramesFromSeconds(2);
    bool stayed = true;
    ASSERT_TRUE(Eventually([&] {
        stayed = stayed && loudspeaker.IsAudible();
        return engine.Mixed() > end;
    }));
    EXPECT_TRUE(stayed);
    ExpectTone();

    server.Kill();
    ASSERT_TRUE(Silent(loudspeaker));
    EXPECT_TRUE(MixesInTrueTime(engine));
    EXPECT_THAT(loudspeaker.Description(), StartsWith("no sound device: "));

    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(Audible(loudspeaker));
    ExpectTone();
    EXPECT_EQ(engine.Underruns(), 0u);
}

TEST_F(OnAServer, IsNotHeldUpByOneThatHangs) {
    ASSERT_TRUE(server.Start());
    {
        const Loudspeaker loudspeaker(engine);
        ASSERT_TRUE(Audible(loudspeaker));
        server.Freeze();
        ASSERT_TRUE(Silent(loudspeaker));
        EXPECT_TRUE(MixesInTrueTime(engine));
        server.Thaw();
        ASSERT_TRUE(Audible(loudspeaker));
        ExpectTone();
        server.Freeze();
    }
    {
        // The device of the one before still hangs.
        const Loudspeaker loudspeaker(engine);
        EXPECT_TRUE(MixesInTrueTime(engine));
        server.Thaw();
        ASSERT_TRUE(Audible(loudspeaker));
        ExpectTone();
    }
}

}  // namespace
}  // namespace sorakaze::output
