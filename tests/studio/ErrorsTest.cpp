// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Wrong calls, bad input and hostile texts.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "tests/studio/StudioRun.h"

namespace sorakaze {
namespace {

using test::StudioStation;
using test::TraceFields;

TEST(Errors, EachEndsWithOneLineAndItsStatus) {
    StudioStation station;
    station.WriteTone("Music/a.wav", 440, 0.4, 2);
    station.Write("Programs/Show.txt", "mode: songs 1\nintro: 0, play [[iTunes]]\n");
    station.Write("Programs/Endless.txt", "intro: 0, play [[iTunes]]\n");
    station.Write("kept.wav", "precious");
    const struct {
        const char* arguments;
        int status;
        const char* says;
    } cases[] = {
        {"", 2, "--help"},
        {"render --station . --program Show", 2, "--output"},
        {"render --station . --program Show --output a.wav --song-seconds 29", 2, "30"},
        {"render --station . --program Show --output a.wav --limit -1", 2, "--limit"},
        {"render --station . --program Show --output a.wav --bogus", 2, "--bogus"},
        {"render --station . --program Endless --output kept.wav", 2, "--limit SECONDS"},
        {"render --station . --program Shaw --output kept.wav", 1, "There are: "},
        {"render --station . --program Show --playlist None --output kept.wav", 1, "Library"},
        {"render --station home --program Show --output kept.wav", 1, "--station"},
        {"render --station . --program Show --output a.xyz", 1, ".wav"},
        {"render --station . --program Show --output missing/a.wav", 1, "missing"},
        {"render --station . --program Show --output kept.wav --trace missing/t", 1, "missing/t"},
        {"list --station nowhere", 1, "nowhere"},
        {"render --station . --program Show --output a.wav --limit nan", 2, "--limit"},
        {"render --station . --program Show --output ''", 2, "--output"},
        {"render --station . --program Show --output a.wav --trace ./a.wav", 2, "--trace"},
        {"render --station . --program Show --output a.wav --trace Programs/Show.txt", 2, "--trace"},
    };
    for (const auto& c : cases) {
        const auto outcome = station.Run(c.arguments);
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1) << c.arguments << ": " << outcome.error;
        EXPECT_NE(outcome.error.find(c.says), std::string::npos) << c.arguments << ": " << outcome.error;
        EXPECT_EQ(test::ReadFile(station.Path() / "kept.wav"), "precious") << c.arguments;
        EXPECT_FALSE(std::filesystem::exists(station.Path() / "a.wav"));
    }
    for (const char* file : {"{", R"({"voise": ""})"}) {
        station.Write("Sorakaze.app/Contents/Resources/deployment.json", file);
        const auto outcome = station.Run("render --station . --program Show --output a.wav");
        EXPECT_EQ(outcome.status, 1) << file;
        EXPECT_NE(outcome.error.find("deployment.json: "), std::string::npos) << outcome.error;
        EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1) << outcome.error;
    }
}

TEST(Errors, StreamsThatAreClosedOrGoAwayDoNoHarm) {
    StudioStation station;
    station.WriteTone("Music/a.wav", 440, 0.4, 40);
    station.Write("Programs/Show.txt", "mode: songs 1\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\n");
    ASSERT_EQ(station.Run("render --station . --program Show --seed 1 --output good.wav").status, 0);
    const std::string good = test::ReadFile(station.Path() / "good.wav");
    for (const char* streams : {"<&- >&- 2>&-", "| head -c 1", "> /dev/full"}) {
        station.Run(std::string("render --station . --program Show --seed 1 --output a.wav ") + streams);
        EXPECT_EQ(test::ReadFile(station.Path() / "a.wav"), good) << streams;
    }
}

TEST(Errors, BadProgramFiles) {
    StudioStation station;
    station.WriteTone("Music/a.wav", 440, 0.4, 2);
    const struct {
        const char* what;
        std::string file;
        int status;
        const char* says;
    } cases[] = {
        {"a variant beyond the last", "mode: songs 1\nopening: 99, wait 1\n", 1, "OutOfBoundsException"},
        {"a variant below the first", "mode: songs 1\nopening: -1, wait 1\n", 1, "OutOfBoundsException"},
        {"an empty sound folder", "mode: songs 1\nopening: 0, play Sounds\nintro: 0, play [[iTunes]]\n", 1,
         "NilObjectException"},
        {"a sound that is missing",
         "mode: songs 1\nopening: 0, play Sounds/x.wav\nintro: 0, play [[iTunes]]\n", 0,
         "指定したサウンドファイルSounds/x.wavが存在しません"},
        {"an unknown voice",
         "mode: songs 1\npersonality: Nobody X\nopening: 0, say hi\nintro: 0, play [[iTunes]]\n", 0,
         "読み上げ結果のサウンドファイルが存在しません"},
        {"no track ever", "mode: songs 1\nopening: 0, wait 1\nintro: 0, wait 1000\n", 1, "standstill"},
    };
    for (const auto& c : cases) {
        station.Write("Programs/Show.txt", c.file);
        const auto outcome = station.Render("show.wav", "--quiet");
        EXPECT_EQ(outcome.status, c.status) << c.what << ": " << outcome.error;
        EXPECT_NE(outcome.error.find(c.says), std::string::npos) << c.what << ": " << outcome.error;
    }
}

TEST(Errors, AFullDiskIsSaidAndLosesNothing) {
    StudioStation station;
    station.WriteTone("Music/a.wav", 440, 0.4, 200);
    station.Write("Programs/Show.txt", "mode: songs 1\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\n");
    for (const char* name : {"kept.wav", "kept.flac", "kept.mp3", "kept.opus"}) {
        station.Write(name, "precious");
        const auto outcome = station.Render(name, "--quiet", "trap '' XFSZ; ulimit -f 400;");
        EXPECT_EQ(outcome.status, 1) << name;
        EXPECT_NE(outcome.error.find(name), std::string::npos) << outcome.error;
        EXPECT_EQ(test::ReadFile(station.Path() / name), "precious");
    }
    for (const auto& entry : std::filesystem::directory_iterator(station.Path())) {
        EXPECT_TRUE(!entry.path().filename().string().starts_with(".kept")) << "left over: " << entry.path();
    }
}

TEST(Errors, HostileTitlesReachTheShellAndHarmNobody) {
    StudioStation station;
    const auto key = station.Write("home/key",
                                   "secret words that would take the announcer very long to read out aloud, "
                                   "one after the other, if only the shell could see them at all");
    const auto music = station.WriteTone("Music/a.wav", 440, 0.4, 2);
    const std::string home = (station.Path() / "home").string();
    const std::string attacks[] = {"$(cat " + key.string() + ")",
                                   "`cat ~/key`",
                                   "$(echo owned > " + home + "/owned)",
                                   "$(rm -rf " + music.parent_path().string() + ")",
                                   "\\$(x) $(kill -9 -1)",
                                   "$(cat /etc/shadow ~root/.ssh/*)"};
    std::string program = "mode: songs 0\npersonality: Fred X\n";
    for (const auto& attack : attacks) program += "opening: 0, say Hello " + attack + ".\n";
    station.Write("Programs/Show.txt", program);
    const auto outcome = station.Render("show.wav");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_FALSE(std::filesystem::exists(home + "/owned"));
    EXPECT_TRUE(std::filesystem::exists(music));
    const auto seconds = TraceFields(station.Path() / "trace.jsonl", "say", "seconds");
    EXPECT_EQ(seconds.size(), std::size(attacks) - 1)
        << "the one that kills all it can see kills its own shell";
    for (const auto& length : seconds)
        EXPECT_LT(std::stod(length), 3.5) << "longer than what the program says";
}

TEST(List, NamesProgramsAndPlaylists) {
    StudioStation station;
    station.WriteTone("Music/a.wav", 440, 0.4, 1);
    station.Write("Music/Evening, late.m3u8", "a.wav\na.wav\n");
    station.Write("Programs/夜.txt", "");
    const auto outcome = station.Run("list --station .");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "Programs:\n  夜\nPlaylists:\n  Library (1)\n  Evening,late (2)\n");
}

}  // namespace
}  // namespace sorakaze
