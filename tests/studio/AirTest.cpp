// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Shows on the air: the program as it is started, and what it hears of silence.
#include "sound/TapRing.h"
#include "studio/air/DeadAir.h"
#include "tests/studio/StudioRun.h"

namespace sorakaze::test {
namespace {

using studio::DeadAir;

struct Silence : testing::Test {
    /// The verdicts of so many seconds, but for Nothing.
    std::vector<DeadAir::Verdict> Pass(double seconds, bool sound) {
        std::vector<DeadAir::Verdict> verdicts;
        for (const double end = now + seconds; now < end;) {
            now += 0.25;
            const auto verdict = deadAir.Observe(sound);
            if (verdict != DeadAir::Verdict::Nothing) verdicts.push_back(verdict);
        }
        return verdicts;
    }
    void Line(const char* text) { deadAir.OnShowEvent({0, ShowEvent::Kind::Line, {{"text", String(text)}}}); }
    using Verdicts = std::vector<DeadAir::Verdict>;
    double now = 100;
    DeadAir deadAir{20, [this] { return now; }};
};

TEST_F(Silence, IsToldOfAndThenEndsTheShow) {
    deadAir.Begin();
    EXPECT_EQ(Pass(4.5, false), Verdicts{});
    EXPECT_EQ(Pass(30, true), Verdicts{});
    EXPECT_EQ(Pass(19, false), Verdicts{DeadAir::Verdict::Silent});
    EXPECT_EQ(Pass(1, true), Verdicts{DeadAir::Verdict::Over});
    EXPECT_EQ(Pass(60, false), (Verdicts{DeadAir::Verdict::Silent, DeadAir::Verdict::Restart}));
    deadAir.End();
    EXPECT_EQ(Pass(60, false), Verdicts{});
}

TEST_F(Silence, ThatTheProgramAsksForIsNone) {
    deadAir.Begin();
    Line("wait 60");
    EXPECT_EQ(Pass(64, false), Verdicts{});
    EXPECT_EQ(Pass(2, false), Verdicts{DeadAir::Verdict::Silent});
    Line("play Sounds/nothing.wav");
    EXPECT_EQ(Pass(15, false), Verdicts{DeadAir::Verdict::Restart});
    Line("wait -5");
    Line("wait x");
    EXPECT_EQ(Pass(1, false), Verdicts{});
}

TEST_F(Silence, OfAStoppedProcessIsNone) {
    deadAir.Begin();
    EXPECT_EQ(Pass(3, false), Verdicts{});
    now += 3600;
    EXPECT_EQ(Pass(1, false), Verdicts{});
    EXPECT_EQ(Pass(3, false), Verdicts{DeadAir::Verdict::Silent});
}

TEST(Tap, TheRingKeepsTheOrderAndCountsWhatDoesNotFit) {
    sound::TapRing ring(sound::Frames{100});  // 128
    float next = 0, expected = 0;
    std::vector<float> given(2 * 48), taken(2 * 37);
    std::size_t inside = 0;
    std::uint64_t dropped = 0;
    for (int round = 0; round < 1000; ++round) {
        for (float& sample : given) sample = next++;
        ring.OnMixed(given);
        const std::size_t kept = std::min<std::size_t>(48, 128 - inside);
        inside += kept;
        dropped += 48 - kept;
        next -= static_cast<float>(2 * (48 - kept));  // what was dropped comes again
        const std::size_t frames = ring.Take(taken);
        inside -= frames;
        for (std::size_t i = 0; i < 2 * frames; ++i) ASSERT_EQ(taken[i], expected++);
    }
    EXPECT_EQ(ring.Dropped(), dropped);
    EXPECT_GT(dropped, 0u);
}

struct Air : testing::Test {
    /// Of the day's log, in order.
    std::vector<std::string> Logged(const std::string& what, const std::string& field) const {
        std::vector<std::string> values;
        for (const auto& file : std::filesystem::directory_iterator(station / "log")) {
            std::ifstream in(file.path());
            for (std::string line; std::getline(in, line);) {
                const auto event = nlohmann::json::parse(line);
                if (event.at("what") == what) values.push_back(event.value(field, ""));
            }
        }
        return values;
    }
    Outcome Play(const std::string& words, const std::string& before = "") const {
        return station.Run("air --station . --seed 1 --log log --to air.wav " + words, before);
    }
    using Texts = std::vector<std::string>;
    StudioStation station;
};

TEST_F(Air, ShowsFollowOneAnotherAndAreRecorded) {
    station.WriteTone("Music/track.wav", 500, 0.25, 2);
    station.Write("Programs/One.txt", "mode: songs 1\nintro: 0, play [[iTunes]]\nending: 0, wait 0.5\n");
    station.Write("Programs/Two.txt", "mode: songs 1\nintro: 0, play [[iTunes]]\n");
    const auto outcome = Play("One Library --then Two Library --then one Library");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(Logged("show", "program"), (Texts{"One", "Two", "One"})) << outcome.out;
    EXPECT_EQ(Logged("track", "title"), (Texts{"track", "track", "track"}));
    EXPECT_EQ(Logged("end", "what").size(), 3u);
    EXPECT_EQ(Logged("off-air", "what").size(), 1u);
    const auto sound = sound::testing::DecodeWhole(station / "air.wav");
    double energy = 0;
    for (const float sample : sound) energy += double{sample} * sample;
    // Three tracks of two seconds, whatever passes between them.
    EXPECT_NEAR(energy / sound::kSampleRate / sound::kChannels, 3 * 2 * 0.25 * 0.25 / 2, 0.02);
}

TEST_F(Air, ASignalEndsTheShowAndKeepsWhatWasRecorded) {
    station.WriteTone("Music/track.wav", 500, 0.25, 60);
    station.Write(
        "Programs/Show.txt",
        "mode: all\nintro: 0, play [[iTunes]]\nending: 0, play Sounds/end.wav\nending: 0, wait 2\n");
    station.WriteTone("Sounds/end.wav", 2000, 0.5, 2);
    const auto atOnce = Play("Show Library --repeat", "timeout --preserve-status -s TERM 6");
    EXPECT_EQ(atOnce.status, 0) << atOnce.error;
    EXPECT_EQ(Logged("sound", "path").size(), 0u);
    EXPECT_GT(sound::testing::DecodeWhole(station / "air.wav").size(), 2u * sound::kSampleRate);
    const auto graceful = Play("Show Library --repeat --graceful", "timeout --preserve-status -s TERM 6");
    EXPECT_EQ(graceful.status, 0) << graceful.error;
    EXPECT_EQ(Logged("sound", "path").size(), 1u) << graceful.out;
    EXPECT_EQ(Logged("ended", "what").size(), 2u);
    EXPECT_EQ(Logged("show", "program").size(), 2u);
}

TEST_F(Air, DeadAirStartsTheShowAnew) {
    station.WriteTone("Music/silence.wav", 500, 0.0f, 60);
    station.Write("Programs/Show.txt", "mode: all\nintro: 0, play [[iTunes]]\n");
    const auto outcome = Play("Show Library --dead-air 6", "timeout --preserve-status -s TERM 14");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_GE(Logged("dead-air", "text").size(), 1u) << outcome.error;
    EXPECT_GE(Logged("restart", "text").size(), 1u) << outcome.error;
    EXPECT_GE(Logged("show", "program").size(), 2u) << outcome.out;
}

TEST_F(Air, WrongCallsAreOneLine) {
    station.WriteTone("Music/track.wav", 500, 0.25, 2);
    station.Write("Programs/Show.txt", "mode: songs 1\nintro: 0, play [[iTunes]]\n");
    struct Call {
        const char *words, *error;
        int status = 2;
    };
    for (const auto& [words, error, status] : std::vector<Call>{
             {"air --station . Nothing", "no program named \"Nothing\"", 1},
             {"air --station . Show Library --then Show Nowhere", "no playlist named \"Nowhere\"", 1},
             {"air --station . Show --start 25:00", "--start 25:00"},
             {"air --station . Show --to a.wav --to ./a.wav", "given twice"},
             {"air --station . Show --to a.xyz", "a.xyz"},
             {"air --station . Show --to http://u:secret@h/x", "--to http://...:"}}) {
        const auto outcome = station.Run(words);
        EXPECT_EQ(outcome.status, status) << words << outcome.error;
        EXPECT_NE(outcome.error.find(error), std::string::npos) << outcome.error;
        EXPECT_EQ(outcome.error.find("secret"), std::string::npos) << outcome.error;
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    }
    const auto nowhere = station.Run("air --station . Show --to /proc/a.wav");
    EXPECT_EQ(nowhere.status, 1) << nowhere.error;
    // Where one output works, the show goes on.
    const auto one = station.Run("air --station . Show --to /proc/a.wav --to b.wav --log /proc/log");
    EXPECT_EQ(one.status, 0) << one.error;
    EXPECT_NE(one.error.find("/proc/a.wav"), std::string::npos) << one.error;
    EXPECT_NE(one.error.find("No log can be written in /proc/log"), std::string::npos) << one.error;
    EXPECT_TRUE(std::filesystem::exists(station / "b.wav"));
}

}  // namespace
}  // namespace sorakaze::test
