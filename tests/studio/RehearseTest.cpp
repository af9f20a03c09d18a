// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// sorakaze-studio rehearse against render: the same show, to the tick.
#include <regex>

#include "studio/Rehearsal.h"
#include "tests/studio/StudioRun.h"

namespace sorakaze::test {
namespace {

using Lines = std::vector<std::string>;

struct Rehearse : testing::Test {
    Rehearse() {
        station.WriteTone("Music/a/long.wav", 440, 0.2, 40);
        Tone("Music/a/short.wav", 0.4f, 350'123);
        Tone("Music/a/soft.wav", 0.01f, 586'080);
        station.Write("Music/a/broken.wav", "no sound");
        Tone("Sounds/jingles/one.wav", 0.3f, 81'601);
        Tone("Sounds/jingles/two.wav", 0.3f, 148'800);
        station.Write("Programs/Show.txt", R"(mode: songs 4
personality: Samantha X
opening: 0, say Good evening. This is where it begins.
opening: 0, play Sounds/jingles
opening: 0, say We talk over a jingle.
opening: 0, wait 2.5
intro: 0, play [[iTunes]]
intro: 0, wait 1
intro: 0, say Here is [[song]] from the album [[album]].
intro: 0, say And there it is still.
intro: 1, say [[song]] comes now.
intro: 1, play [[iTunes]]
introW: 0, play [[iTunes]]
jingle: 0, wait 0.3
jingle: 1, play Sounds/jingles
jingle: 1, wait 4
ending: 0, say That was all.
)");
    }

    void Tone(const std::string& name, float amplitude, std::size_t frames) const {
        sound::testing::WriteSound(station.Write(name, ""), sound::testing::Sine(660, frames, amplitude));
    }
    /// The trace without what only a mix knows.
    Lines Trace() const {
        Lines lines;
        std::ifstream in(station.Path() / "trace.jsonl");
        for (std::string line; std::getline(in, line);)
            if (line.find(R"("what":"level")") == std::string::npos &&
                line.find(R"("what":"duck")") == std::string::npos)
                lines.push_back(line);
        return lines;
    }

    StudioStation station;
};

TEST_F(Rehearse, HasTheTimesOfARender) {
    for (const char* loudness : {R"({"loudness": -16})", R"({"loudness": "off"})"}) {
        station.Write("Sorakaze.app/Contents/Resources/deployment.json", loudness);
        for (const char* seed : {"1", "2", "3"}) {
            SCOPED_TRACE(std::string(loudness) + " seed " + seed);
            const std::string show = std::string(" --station . --program Show --song-seconds 30 --seed ") +
                                     seed + " --trace trace.jsonl";
            const auto rendered = station.Run("render --offline --quiet --output none" + show);
            const Lines expected = Trace();
            const auto rehearsed = station.Run("rehearse" + show);
            EXPECT_EQ(rehearsed.status, 0) << rehearsed.error;
            EXPECT_GT(expected.size(), 20u) << rendered.error;
            EXPECT_EQ(Trace(), expected);
        }
    }
}

TEST_F(Rehearse, MarksWhatLooksWrong) {
    station.Write("Music/List.m3u", "a/short.wav\na/broken.wav\na/short.wav\n");
    station.Write("Programs/Show.txt",
                  "mode: songs 3\nintro: 0, play [[iTunes]]\nintroW: 0, play [[iTunes]]\nending: 0, wait 3\n"
                  "intro: 0, say \"From\"\t[[album]]. # album\nintro: 1, play [[iTunes]]\nending: 0, play "
                  "Sounds/jingles/one.wav\nending: 0, wait 2\n");
    // Some of these draw the same variant thrice.
    std::string told;
    for (int seed = 1; seed <= 12; ++seed)
        told += station.Run("rehearse --station . Show List --seed " + std::to_string(seed)).out;
    for (const char* wrong : {"! .*broken.wav", "! \\[\\[album\\]\\] stands for nothing here \\(line 5\\)",
                              "! intro [01] comes for the third time", "! silence for 3\\.[0-9] s"})
        EXPECT_TRUE(std::regex_search(told, std::regex(wrong))) << wrong << "\n" << told;
}

TEST_F(Rehearse, FindsTheShowThatEndsNearest) {
    const auto lengthOf = [&](const std::string& seed) {
        const auto out = station.Run("rehearse --station . Show --song-seconds 30 --seed " + seed).out;
        return out.substr(out.rfind("seed "));
    };
    const auto all = station.Run("rehearse --station . Show --song-seconds 30 --seeds 6 --end-after 0:01");
    ASSERT_EQ(all.status, 0) << all.error;
    std::smatch found;
    ASSERT_TRUE(std::regex_search(all.out, found, std::regex("^6 shows: ([0-9:]+) \\(seed ([0-9]+)\\) to")));
    // The shortest is the nearest to a second.
    EXPECT_NE(all.out.find("nearest to 0:01: seed " + found[2].str() + ", " + found[1].str()),
              std::string::npos)
        << all.out;
    EXPECT_EQ(all.out.substr(all.out.rfind("\nseed ") + 1), lengthOf(found[2]));
    EXPECT_EQ(station.Run("rehearse --station . Show --end-after 1:00").status, 2);
    for (const char* wrong :
         {"--end-after soon", "--end-after ''", "--end-after 58:60", "--trace show.jsonl"})
        EXPECT_EQ(station.Run(std::string("rehearse --station . Show --seeds 2 ") + wrong).status, 2)
            << wrong;
    EXPECT_EQ(station.Run("rehearse --station . Shaw --seeds 3").status, 1);
}

TEST(EmptyPlaceholders, AreFoundWhereNothingStands) {
    const struct {
        const char *line, *became;
        Lines empty;
    } cases[] = {{"say From the album [[album]].", "say From the album .", {"[[album]]"}},
                 {"say From the album [[album]].", "say From the album Blue.", {}},
                 {"say [[song]] by [[name]]", "say Blue by ", {"[[name]]"}},
                 {"say [[song]][[name]]!", "say !", {"[[name]]"}},
                 {"say [[song]]a", "say abba", {}},
                 {"say [[song]]a", "say a", {"[[song]]"}},
                 {"play [[iTunes]]", "play [[iTunes]]", {}},
                 {"say no [[end", "say no [[end", {}}};
    for (const auto& each : cases)
        EXPECT_EQ(studio::EmptyPlaceholders(each.line, each.became), each.empty) << each.line;
}

}  // namespace
}  // namespace sorakaze::test
