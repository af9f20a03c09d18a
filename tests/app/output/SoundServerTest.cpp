// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The loudspeaker on a real sound server that comes, dies and hangs.
#include <cmath>

#include "tests/app/output/OutputTesting.h"
#include "tests/support/Program.h"

/// SDL forgets an operation of the server's library (88 bytes) at every change that the server announces.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:pa_xmalloc\n";
}

namespace sorakaze::output {
namespace {

using namespace sound::testing;

/// A server of the test's own, with one device that nobody hears, and a tone that plays.
struct OnAServer : testing::Test {
    OnAServer() {
        setenv("SDL_AUDIODRIVER", "pulseaudio", 1);
        setenv("PULSE_SERVER", ("unix:" + socket).c_str(), 1);
        for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "PULSE_RUNTIME_PATH"})
            setenv(name, scratch.Path().c_str(), 1);
        WriteSound(scratch / "tone.wav", Sine(440, 240 * sound::kSampleRate, 0.5f));
        voice = engine.Open(scratch / "tone.wav");
        voice->Start();
    }

    void Start() {
        server.emplace(
            std::vector<std::string>{"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                                     "--use-pid-file=no", "-L", "module-null-sink sink_name=test", "-L",
                                     "module-native-protocol-unix auth-anonymous=1 socket=" + socket},
            scratch / "server.log");
    }
    static bool Audible(const Loudspeaker& loudspeaker, bool audible = true) {
        return Eventually([&] { return loudspeaker.IsAudible() == audible; });
    }
    /// On a recorder of what the server plays, half a second that holds nothing but the tone. There are
    /// others: the swell, and holes where the machine is short of time.
    void ExpectTone() {
        const test::Program recorder({"parec", "--device=test.monitor", "--raw", "--format=float32le",
                                      "--rate=48000", "--channels=2", "--latency-msec=50"},
                                     scratch / "recording");
        Tone tone{};
        EXPECT_TRUE(Eventually([&] {
            const Samples left = ReadLeft(scratch / "recording");
            if (left.size() < 24000) return false;
            tone = MeasureTone(std::span(left).last(24000), 440);
            return std::fabs(tone.amplitude - 0.5) < 0.02 && tone.purity > 50;
        })) << tone.amplitude
            << ", and times as strong as all else: " << tone.purity;
    }

    const ScratchFolder scratch;
    const std::string socket = scratch / "native";
    std::optional<test::Program> server;
    sound::MixingEngine engine{sound::MixingMode::RealTime};
    std::shared_ptr<sound::Voice> voice;
};

TEST_F(OnAServer, PlaysOnWhenItDiesAndIsHeardAgainWhenItIsBack) {
    Start();
    const Loudspeaker loudspeaker(engine);
    ASSERT_TRUE(Audible(loudspeaker));
    // An idle server asks slowly at first; that is no reason to leave it.
    const auto end = engine.Mixed() + sound::FramesFromSeconds(2);
    ASSERT_TRUE(Eventually([&] { return engine.Mixed() > end || !loudspeaker.IsAudible(); }));
    EXPECT_TRUE(loudspeaker.IsAudible());
    ExpectTone();

    server.reset();
    ASSERT_TRUE(Audible(loudspeaker, false));
    EXPECT_TRUE(MixesInRealTime(engine));
    Start();
    ASSERT_TRUE(Audible(loudspeaker));
    ExpectTone();
    EXPECT_EQ(engine.Underruns(), 0u);
}

TEST_F(OnAServer, IsNotHeldUpByOneThatHangs) {
    Start();
    for (const bool hangsFromTheStart : {false, true}) {
        const Loudspeaker loudspeaker(engine);
        // The device of the one before still hangs.
        if (!hangsFromTheStart) {
            ASSERT_TRUE(Audible(loudspeaker));
            server->Signal(SIGSTOP);
            ASSERT_TRUE(Audible(loudspeaker, false));
        }
        EXPECT_TRUE(MixesInRealTime(engine));
        server->Signal(SIGCONT);
        ASSERT_TRUE(Audible(loudspeaker));
        ExpectTone();
        if (!hangsFromTheStart) server->Signal(SIGSTOP);
    }
}

}  // namespace
}  // namespace sorakaze::output
