// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Wrong calls, bad input and hostile texts.
#include "tests/studio/StudioRun.h"

namespace sorakaze::test {
namespace {

struct Errors : testing::Test {
    StudioStation station;
    const std::filesystem::path music = station.WriteTone("Music/a.wav", 440, 0.4, 2);
};

TEST_F(Errors, EachEndsWithOneLineAndItsStatus) {
    station.Write("Programs/Show.txt", "mode: songs 1\nintro: 0, play [[iTunes]]\n");
    station.Write("Programs/Endless.txt", "intro: 0, play [[iTunes]]\n");
    station.Write("kept.wav", "precious");
    const std::string show = "render --station . --program Show --output ";
    const struct {
        std::string arguments;
        int status;
        const char* names;
    } cases[] = {
        {"", 2, "render, "},
        {"rendr", 2, "Did you mean render?"},
        {"frobnicate --x", 2, "There are: "},
        {"render --playlst x", 2, "Did you mean --playlist?"},
        {"render --station . --prog=Show", 2, "Did you mean --program?"},
        {"list --outptu", 2, "list --help"},
        {"render --program A B --output none", 2, "quotation marks"},
        {"render --program A --output none --seed x", 2, "--seed"},
        {"render --station . --program Endless --output kept.wav", 2, "--limit SECONDS"},
        {"render --station . --program Shaw --output kept.wav", 1, "There are: Show, "},
        {show + "a.wav --limit nan", 2, "--limit"},
        {show + "kept.wav --playlist None", 1, "Library"},
        {"render --station home --program Show --output kept.wav", 1, "--station"},
        {show + "a.xyz", 1, ".wav"},
        {show + "missing/a.wav", 1, "missing"},
        {show + "kept.wav --trace missing/t", 1, "missing/t"},
        {show + "a.wav --trace ./a.wav", 2, "--trace"},
        {show + "a.wav --trace Programs/Show.txt", 2, "--trace"},
        {show + "a.wav ", 1, "deployment.json: "},
    };
    for (const auto& [arguments, status, names] : cases) {
        SCOPED_TRACE(arguments);
        if (&arguments == &std::prev(std::end(cases))->arguments)
            station.Write("Sorakaze.app/Contents/Resources/deployment.json", "{");
        const auto outcome = station.Run(arguments);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1) << outcome.error;
        EXPECT_NE(outcome.error.find(names), std::string::npos) << outcome.error;
        EXPECT_EQ(ReadBytes(station.Path() / "kept.wav"), "precious");
        EXPECT_FALSE(std::filesystem::exists(station.Path() / "a.wav"));
    }
}

TEST_F(Errors, StreamsThatAreClosedOrGoAwayDoNoHarm) {
    station.WriteTone("Music/a.wav", 440, 0.4, 40);
    station.Write("Programs/Show.txt", "mode: songs 1\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\n");
    ASSERT_EQ(station.Render("good.wav").status, 0);
    for (const char* streams : {"<&- >&- 2>&-", "| head -c 1", "> /dev/full"}) {
        station.Render("a.wav", streams);
        EXPECT_EQ(ReadBytes(station.Path() / "a.wav"), ReadBytes(station.Path() / "good.wav")) << streams;
    }
}

TEST_F(Errors, BadProgramFiles) {
    const struct {
        std::string file;
        int status;
        const char* says;
    } cases[] = {
        {"opening: 99, wait 1\n", 1, "OutOfBoundsException"},
        {"opening: 0, play Sounds\n", 1, "NilObjectException"},
        {"opening: 0, play Sounds/x.wav\nintro: 0, play [[iTunes]]\n", 0, "Sounds/x.wav"},
        {"personality: Nobody X\nopening: 0, say hi\nintro: 0, play [[iTunes]]\n", 0, "読み上げ結果"},
        {"opening: 0, wait 1\nintro: 0, wait 1000\n", 1, "standstill"},
        {"opening: 0, play Sounds/x.wav\nintro: 0, wait 1000\n", 1, ", 0 tracks; 1 other failure"},
    };
    for (const auto& [file, status, says] : cases) {
        station.Write("Programs/Show.txt", "mode: songs 1\n" + file);
        const auto outcome = station.Render("show.wav", "--quiet");
        EXPECT_EQ(outcome.status, status) << file << outcome.error;
        EXPECT_NE(outcome.error.find(says), std::string::npos) << file << outcome.error;
    }
}

/// The lines of a text that hold `part`.
std::size_t LinesWith(const std::string& text, const std::string& part) {
    std::istringstream in(text);
    std::size_t count = 0;
    for (std::string line; std::getline(in, line);) count += line.find(part) != std::string::npos ? 1 : 0;
    return count;
}

TEST_F(Errors, EveryTrackThatCannotBePlayedIsToldOnceAndCounted) {
    const std::string sound = ReadBytes(station.WriteTone("Music/good.mp3", 440, 0.4, 1));
    const struct {
        const char* name;
        std::string bytes;
        const char* why;
    } files[] = {
        {"text.mp3", "this is no sound", "it holds no sound that can be played"},
        {"empty.flac", "", "it is empty"},
        {"cut.mp3", sound.substr(0, 30), "it holds no sound that can be played"},
        {"gone.ogg", "", "there is no such file"},
        {"folder.wav", "", "it is a folder"},
    };
    std::string playlist = "a.wav\ngood.mp3\n";
    for (const auto& [name, bytes, why] : files) {
        const auto file = station.Write(std::string("Music/") + name, bytes);
        if (name == std::string("folder.wav") || name == std::string("gone.ogg"))
            std::filesystem::remove(file);
        if (name == std::string("folder.wav")) std::filesystem::create_directory(file);
        playlist += std::string(name) + "\n";
    }
    station.Write("Music/List.m3u", playlist);
    station.Write("Programs/Show.txt", "mode: all\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\n");
    const auto outcome = station.Render("none", "--playlist List");
    EXPECT_EQ(outcome.status, 4) << outcome.error;
    for (const auto& [name, bytes, why] : files) {
        const std::string line = std::string("Music/") + name + ": " + why;
        EXPECT_EQ(LinesWith(outcome.error, line), 1u) << line << "\n" << outcome.error;
        EXPECT_EQ(LinesWith(outcome.out, "! " + line), 1u) << line << "\n" << outcome.out;
    }
    EXPECT_EQ(station.Traced("failed", "which"), std::vector<std::string>(5, "track"));
    EXPECT_LT(std::stod(station.Traced("failed", "ticks")[1]),
              std::stod(station.Traced("track", "ticks")[1]) + 90)
        << "known before its turn";
    EXPECT_EQ(LinesWith(outcome.out, "7 tracks, 5 could not be played: text.mp3 (it holds no sound"), 1u)
        << outcome.out;
    EXPECT_NE(outcome.error.find("More than half of the tracks could not be played: 5 of 7.\n"),
              std::string::npos);

    station.Write("Music/List.m3u", "gone.ogg\n");
    EXPECT_EQ(station.Render("none", "--playlist List --quiet").status, 4);
}

TEST_F(Errors, AMessageNamesItsLineAndIsAnsweredAfterItsTime) {
    station.Write("Programs/Show.txt",
                  "mode: songs 0\n# a comment\npersonality: Nobody X\nopening: 0, say hi\n"
                  "opening: 0, say Rock `n Roll\n");
    const auto check = [&](double leastTicks, double mostTicks) {
        const auto outcome = station.Render("none");
        EXPECT_EQ(LinesWith(outcome.error, "say: no voice is called \"Nobody\""), 1u) << outcome.error;
        EXPECT_EQ(LinesWith(outcome.error, "(Show.txt, line 4)"), 1u) << outcome.error;
        EXPECT_EQ(LinesWith(outcome.error, "backquote substitution (Show.txt, line 5)"), 1u) << outcome.error;
        EXPECT_EQ(LinesWith(outcome.out, "; 2 other failures"), 1u) << outcome.out;
        EXPECT_EQ(station.Traced("failed", "line"), (std::vector<std::string>{"4", "5"}));
        const double end = std::stod(station.Traced("end", "ticks").at(0));
        EXPECT_TRUE(end >= leastTicks && end < mostTicks) << end;
    };
    check(0, 100);
    station.Write("Sorakaze.app/Contents/Resources/deployment.json",
                  R"({"encyclopaediaEnglish": "", "loudness": "off", "answerMessagesAfter": 20})");
    check(2 * 20 * 60, 2 * 20 * 60 + 100);
}

TEST_F(Errors, AFullDiskIsSaidAndLosesNothing) {
    station.WriteTone("Music/a.wav", 440, 0.4, 200);
    station.Write("Programs/Show.txt", "mode: songs 1\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\n");
    for (const char* name : {"kept.wav", "kept.flac", "kept.mp3", "kept.opus"}) {
        station.Write(name, "precious");
        const auto outcome = station.Render(name, "--quiet", "trap '' XFSZ; ulimit -f 400;");
        EXPECT_EQ(outcome.status, 1) << name;
        EXPECT_NE(outcome.error.find(name), std::string::npos) << outcome.error;
        EXPECT_EQ(ReadBytes(station.Path() / name), "precious");
    }
    for (const auto& entry : std::filesystem::directory_iterator(station.Path()))
        EXPECT_FALSE(entry.path().filename().string().starts_with(".kept")) << entry.path();
}

TEST_F(Errors, HostileTitlesReachTheShellAndHarmNobody) {
    const auto key = station.Write("home/key",
                                   "secret words that would take the announcer very long to read out aloud, "
                                   "one after the other, if only the shell could see them at all");
    const std::string owned = station / "home/owned";
    const std::string attacks[] = {
        "$(cat " + key.string() + ")",   "`cat ~/key`",
        "$(echo owned > " + owned + ")", "$(rm -rf " + music.parent_path().string() + ")",
        "\\$(x) $(kill -9 -1)",          "$(cat /etc/shadow ~root/.ssh/*)"};
    std::string program = "mode: songs 0\npersonality: Fred X\n";
    for (const auto& attack : attacks) program += "opening: 0, say Hello " + attack + ".\n";
    station.Write("Programs/Show.txt", program);
    const auto outcome = station.Render("show.wav");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_FALSE(std::filesystem::exists(owned));
    EXPECT_TRUE(std::filesystem::exists(music));
    const auto seconds = station.Traced("say", "seconds");
    EXPECT_EQ(seconds.size(), std::size(attacks) - 1)
        << "the one that kills all it can see kills its own shell";
    for (const auto& length : seconds)
        EXPECT_LT(std::stod(length), 3.5) << "longer than what the program says";
}

TEST_F(Errors, ASentenceThatLastsForHoursIsCut) {
    // The line's own shell makes the sound: 8 kHz, 8 bits, an hour and more.
    station.Write(
        "Programs/Show.txt",
        "mode: songs 0\npersonality: Fred X\nopening: 0, say A `for o in temp*; do printf "
        "'RIFF\\377\\377\\377\\177WAVEfmt \\020\\0\\0\\0\\001\\0\\001\\0\\100\\037\\0\\0"
        "\\100\\037\\0\\0\\001\\0\\010\\0data\\0\\0\\0\\002' > $o; dd if=/dev/zero of=$o bs=1000000 "
        "seek=1 count=30; kill $$; done`\n");
    const auto outcome = station.Render("none", "--limit 1000");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    ASSERT_EQ(station.Traced("say", "seconds").size(), 1u);
    EXPECT_GT(std::stod(station.Traced("say", "seconds")[0]), 1000);
    EXPECT_EQ(station.Traced("failed", "which").size(), 1u);
    ASSERT_EQ(station.Traced("end", "ticks").size(), 1u);
    EXPECT_LT(std::stod(station.Traced("end", "ticks")[0]), 150 * 60);
}

TEST_F(Errors, ListNamesProgramsAndPlaylists) {
    station.Write("Music/Evening, late.m3u8", "C:\\x\\a.wav\na.wav\ngone\xFF.wav\n");
    station.Write("Programs/夜.txt", "");
    EXPECT_EQ(station.Run("list --station .").out,
              "Programs:\n  夜\nPlaylists:\n  Library (1)\n  Library (shuffled) (1)\n  Evening,late (3, 1 "
              "missing)\n");
    const auto list = nlohmann::json::parse(station.Run("list --station . --json").out);
    EXPECT_EQ(list["programs"], nlohmann::json::array({"夜"}));
    EXPECT_EQ(list["playlists"][2]["tracks"], 3);
    EXPECT_EQ(list["playlists"][2]["missingTracks"][0]["number"], 3);
    EXPECT_EQ(list["playlists"][2]["missingTracks"][0]["path"], "gone\uFFFD.wav") << "as it is written";
}

}  // namespace
}  // namespace sorakaze::test
