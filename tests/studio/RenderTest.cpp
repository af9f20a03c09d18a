// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Whole shows as sound, measured.
#include "tests/studio/StudioRun.h"

namespace sorakaze::test {
namespace {

/// A rendered file as the mixing engine plays it.
struct SoundFile {
    double Seconds() const {
        return static_cast<double>(samples.size()) / sound::kChannels / sound::kSampleRate;
    }
    /// Peak between two ticks of a show.
    float Peak(double fromTick, double toTick) const {
        const auto at = [&](double tick) {
            return std::min(static_cast<std::size_t>(tick * 800) * sound::kChannels, samples.size());
        };
        return sound::testing::Peak(std::span(samples).subspan(at(fromTick), at(toTick) - at(fromTick)));
    }

    sound::testing::Samples samples;
};

struct Render : testing::Test {
    double TickOf(const std::string& what, std::size_t index = 0) const {
        const auto ticks = station.Traced(what, "ticks");
        return index < ticks.size() ? std::stod(ticks[index]) : -1;
    }
    /// What came of the program.
    SoundFile Play(const std::string& program, const std::string& options = "") const {
        station.Write("Programs/Show.txt", program);
        const auto outcome = station.Render("show.wav", options);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        EXPECT_EQ(outcome.error.find("voice service"), std::string::npos) << outcome.error;
        return {sound::testing::DecodeWhole(station / "show.wav")};
    }
    /// The same, and once more: the same file and the same trace.
    SoundFile PlayTwice(const std::string& program, const std::string& options) const {
        SoundFile sound = Play(program, options);
        const std::string file = ReadBytes(station / "show.wav"), trace = ReadBytes(station / "trace.jsonl");
        Play(program, options);
        EXPECT_EQ(ReadBytes(station / "show.wav"), file);
        EXPECT_EQ(ReadBytes(station / "trace.jsonl"), trace);
        return sound;
    }

    StudioStation station;
};

TEST_F(Render, NoTitleSteersATerminal) {
    const std::string title = "a\u202Eb\u2066c\u2028d\u009Be\u0007f\xE2\x80\x8D日";
    station.WriteTone("Music/" + title + ".wav", 500, 0.25, 2);
    station.Write("Programs/Show.txt",
                  "mode: songs 1\nintro: 0, say x\u202Ey\x1B[2J\nintro: 0, play [[iTunes]]\n");
    const auto outcome = station.Render("none");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_NE(outcome.out.find("> track 1: abc d e f\u200D日\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("Alex: xy [2J\n"), std::string::npos) << outcome.out;
    EXPECT_EQ(station.Traced("say", "text"), std::vector<std::string>{"x\u202Ey\x1B[2J"});
}

TEST_F(Render, ATextThatIsTooLongIsCutAndToldOf) {
    std::string text;
    for (int i = 0; i < 3000; ++i) text += "word ";
    station.WriteTone("Music/track.wav", 500, 0.25, 1);
    station.Write("Programs/Show.txt",
                  "mode: songs 1\nintro: 0, say " + text + "\nintro: 0, play [[iTunes]]\n");
    const auto outcome = station.Render("none");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(station.Traced("failed", "why"),
              std::vector<std::string>{"the text is too long, its speech was cut"});
    EXPECT_EQ(station.Traced("failed", "which"), std::vector<std::string>{"say"});
    ASSERT_EQ(station.Traced("say", "seconds").size(), 1u);
    EXPECT_NEAR(std::stod(station.Traced("say", "seconds")[0]), 118.5, 3);
}

TEST_F(Render, TheSoundIsWhatTheProgramSays) {
    station.WriteTone("Sounds/tone.wav", 1000, 0.5, 10);
    station.WriteTone("Music/track.wav", 500, 0.25, 60);
    const SoundFile sound = Play(
        "mode: songs 1\nopening: 0, play Sounds/tone.wav\nopening: 0, wait 2\n"
        "intro: 0, wait 1\nintro: 0, play [[iTunes]]\nending: 0, wait 1\n",
        "--song-seconds 30");
    // The effect at volume 70, then its fade: a step every three ticks, down to nothing.
    EXPECT_NEAR(sound.Peak(2, 120), 0.35, 0.002);
    for (int step = 1; step <= 70; ++step) {
        const double tick = 120 + 3 * step;
        EXPECT_NEAR(sound.Peak(tick + 0.5, tick + 2.5), 0.5 * (70 - step) / 100, 0.002) << step;
    }
    const double trackBegins = TickOf("track");
    EXPECT_EQ(trackBegins, 120 + 213 + 1 + 12 + 60);
    EXPECT_EQ(sound.Peak(120 + 213 + 1, trackBegins), 0) << "silence where the program waits";

    // The track at its own level, its fade over about four seconds, silence during the ending.
    const double fade = TickOf("fade");
    const double ended = TickOf("ended");
    EXPECT_NEAR(sound.Peak(trackBegins + 1, fade), 0.25, 0.002);
    EXPECT_NEAR(fade - trackBegins, 30 * 60 + 6, 6);
    EXPECT_NEAR(ended - fade, 240, 6);
    double last = 0.25;
    for (double tick = fade; tick + 12 < ended; tick += 12) {
        const double peak = sound.Peak(tick, tick + 12);
        EXPECT_LE(peak, last + 0.002) << tick;
        EXPECT_LE(last - peak, 0.05) << "no step that can be heard: " << tick;
        last = peak;
    }
    EXPECT_EQ(sound.Peak(ended + 1, TickOf("end")), 0);
    EXPECT_NEAR(sound.Seconds(), TickOf("end") / 60, 0.05);

    // A 1000 Hz sine of this amplitude moves by 0.0458 from sample to sample; a click would stand out.
    EXPECT_LT(sound::testing::LargestStep(sound.samples), 0.048);
}

TEST_F(Render, TheDeskBringsAllToOneLevelAndTellsOfIt) {
    station.Deploy("-20");
    station.WriteTone("Sounds/loud.wav", 1000, 0.9, 2);
    station.WriteTone("Music/1.wav", 500, 0.8, 60);
    station.WriteTone("Music/2.wav", 500, 0.05, 60);
    const SoundFile sound = PlayTwice(
        "mode: songs 2\nopening: 0, play Sounds/loud.wav\nopening: 0, wait 3\nintro: 0, play [[iTunes]]\n"
        "intro: 0, wait 2\nintro: 0, say hello there, how do you do\n",
        "--song-seconds 30");
    // A sine on both sides is as loud in LUFS as its peak in dBFS, but for the weighting at 1000 Hz.
    EXPECT_NEAR(sound.Peak(2, 110), 0.1, 0.01);
    for (const std::size_t track : {0u, 1u}) {
        const double begin = TickOf("track", track);
        EXPECT_NEAR(sound.Peak(begin + 6, begin + 118), 0.1, 0.01) << track;
        const double say = TickOf("say", track);
        EXPECT_LT(sound.Peak(say, say + 17), 0.11) << "the sentence waits until the music is down";
        EXPECT_GT(sound.Peak(say + 19, say + 60), 0.2);
        const double fade = TickOf("fade", track);
        EXPECT_NEAR(sound.Peak(fade + 58, fade + 62), 0.05, 0.006) << "-6 dB after a quarter of the fade";
    }
    EXPECT_EQ(station.Traced("level", "source"), std::vector<std::string>(5, "measured"));
    const auto gains = station.Traced("level", "gain");
    EXPECT_NEAR(std::stod(gains[3]) - std::stod(gains[1]), 20 * std::log10(0.8 / 0.05), 0.2);
    const auto depths = station.Traced("duck", "depth");
    ASSERT_GE(depths.size(), 4u);
    EXPECT_GT(std::stod(depths.front()), 3);
    EXPECT_EQ(std::stod(depths.back()), 0);
}

TEST_F(Render, TheLastLineTellsWhatCameOut) {
    station.WriteTone("Music/track.wav", 1000, 0.25, 40);
    station.Write("Programs/Show.txt", "mode: songs 1\nintro: 0, play [[iTunes]]\n");
    const std::string out = station.Render("show.flac", "--song-seconds 600").out;
    const std::string line = out.substr(out.rfind('\n', out.size() - 2) + 1);
    float loudness = 0, peak = 0, range = -1;
    ASSERT_EQ(
        std::sscanf(line.c_str(), "%f LUFS, true peak %f dBTP, range %f LU\n", &loudness, &peak, &range), 3)
        << line;
    EXPECT_NEAR(loudness, -12, 0.15);
    EXPECT_NEAR(peak, -12, 0.15);
    EXPECT_NEAR(range, 0, 0.1);
    EXPECT_EQ(station.Render("show.flac", "--quiet").out, "");
    EXPECT_EQ(station.Render("none").out.find("LUFS"), std::string::npos) << "nothing came out";
}

TEST_F(Render, SpokenPagesAreHeardFromTheirTickOn) {
    const SoundFile sound = PlayTwice(
        "mode: songs 1\nj_personality: Kyoko\nopening: 0, wait 1\n"
        "opening: 0, sayj こんばんは。The Beatlesの曲を<b>2024年</b>にお送りします。\nopening: 0, wait 1\n"
        "opening: 0, sayj では、お聴きください。\nopening: 0, wait 5\n",
        "--limit 7");
    const double first = TickOf("sayj"), second = TickOf("sayj", 1);
    EXPECT_EQ(second - first, 60) << "the show goes on at once, and nothing of it waits for the service";
    EXPECT_EQ(sound.Peak(0, first), 0);
    EXPECT_GT(sound.Peak(first, first + 12), 0.05);
    EXPECT_GT(sound.Peak(first + 12, second), 0.2);
    EXPECT_GT(sound.Peak(second + 1, second + 60), 0.2);
    EXPECT_LT(sound.Peak(second + 180, 400), 0.002) << "the first speech ended where the second began";
}

TEST_F(Render, LastWordsOutOfAPageAreHeardToTheirEnd) {
    const SoundFile sound =
        Play("mode: songs 0\nopening: 0, wait 1\nending: 0, sayj こんやは、おやすみなさい。\n");
    const double end = TickOf("end");
    EXPECT_GT(sound.Seconds(), end / 60 + 1);
    EXPECT_GT(sound.Peak(end + 6, sound.Seconds() * 60), 0.2);
}

TEST_F(Render, AStopLeavesNoClickAndThePlayersLevelComesBack) {
    station.WriteTone("Music/a.wav", 500, 0.5, 90);
    station.WriteTone("Music/b.wav", 500, 0.5, 90);
    const SoundFile sound = Play("mode: songs 2\nintro: 0, play [[iTunes]]\nopening: 0, wait 1\n",
                                 "--song-seconds 30 --limit 50");
    const double second = TickOf("track", 1);
    ASSERT_GT(second, 0);
    EXPECT_NEAR(sound.Peak(second + 1, 49.5 * 60), 0.5, 0.002);
    EXPECT_LT(sound::testing::LargestStep(sound.samples), 0.5 * 2 * M_PI * 500 / 48000 * 1.1);
    EXPECT_NEAR(sound.Seconds(), 50, 0.1);
}

TEST_F(Render, SpeechIsHeardToItsEndBeforeTheShowGoesOn) {
    station.WriteTone("Sounds/tone.wav", 1000, 0.5, 1);
    const SoundFile sound = Play(
        "personality: Samantha Lee\nmode: songs 0\nopening: 0, say -5 degrees, and $((6*7)) \"quoted\" "
        "minutes.\nopening: 0, say \nopening: 0, play Sounds/tone.wav\nopening: 0, wait 1\n");
    const auto seconds = station.Traced("say", "seconds");
    ASSERT_FALSE(seconds.empty());
    const double spoken = std::stod(seconds[0]);
    EXPECT_NEAR(spoken, 4.7, 3.2);
    EXPECT_GT(sound.Peak(0, spoken * 60), 0.3);
    EXPECT_GE(TickOf("sound"), spoken * 60);
    EXPECT_EQ(station.Traced("say", "voice")[0], "Samantha");
    EXPECT_TRUE(station.Traced("message", "text").empty());
}

TEST_F(Render, TheSameSeedGivesTheSameFile) {
    for (int i = 0; i < 3; ++i)
        station.WriteTone("Music/" + std::to_string(i) + ".mp3", 300 + 100 * i, 0.4, 33);
    station.WriteTone("Sounds/j/a.flac", 900, 0.3, 1);
    station.WriteTone("Sounds/j/b.opus", 1200, 0.3, 1);
    const SoundFile sound = PlayTwice(
        "mode: all\nopening: 0, say Good morning.\nintro: 0, say Next, [[song]].\nintro: 0, play [[iTunes]]\n"
        "intro: 1, play [[iTunes]]\njingle: 0, play Sounds/j\njingle: 0, wait 1\nending: 0, say Bye.\n",
        "--song-seconds 30");
    EXPECT_GT(sound.Seconds(), 90);
    EXPECT_EQ(station.Traced("track", "number"), (std::vector<std::string>{"1", "2", "3"}));
}

TEST_F(Render, TracksThatAreGoneOrNoSoundDontEndTheShow) {
    station.WriteTone("Music/a.mp3", 440, 0.4, 40);
    station.Write("Music/b.mp3", "this is no sound");
    station.WriteTone("Music/d.wav", 660, 0.4, 3);
    station.Write("Music/List.m3u", "a.mp3\nb.mp3\ngone.mp3\nd.wav\nList.m3u\n");
    Play("mode: all\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\n", "--playlist List --song-seconds 30");
    EXPECT_EQ(station.Traced("prepared", "song"), (std::vector<std::string>{"a", "b", "gone", "d", ""}));
    EXPECT_EQ(station.Traced("track", "number"), (std::vector<std::string>{"1", "4"}));
    EXPECT_NEAR(TickOf("ended", 1) - TickOf("track", 1), 180, 12) << "a track that ends early";
}

TEST_F(Render, AnInterruptStopsTheShowAndLeavesAPlayableFile) {
    station.WriteTone("Music/a.wav", 440, 0.4, 60);
    station.Write("Programs/Show.txt", "opening: 0, wait 1\nintro: 0, play [[iTunes]]\n");
    const std::string at = station.Path();
    Program studio({"env", "HOME=" + at, STUDIO_PROGRAM, "render", "--station", at, "--program", "Show",
                    "--limit", "9000000", "--output", at + "/show.wav", "--trace", at + "/trace.jsonl"},
                   station / "stdout");
    while (ReadBytes(station / "trace.jsonl").find("track") == std::string::npos && !studio.Ended()) continue;
    studio.Signal(SIGINT);
    EXPECT_EQ(studio.Wait(), 0);
    EXPECT_GT(SoundFile{sound::testing::DecodeWhole(station / "show.wav")}.Seconds(), 1);
    EXPECT_EQ(station.Traced("end", "ticks").size(), 1u);
}

}  // namespace
}  // namespace sorakaze::test
