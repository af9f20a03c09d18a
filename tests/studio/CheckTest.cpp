// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// sorakaze-studio check, on real files and with the real `say`.
#include <sys/stat.h>

#include "tests/studio/StudioRun.h"

namespace sorakaze::test {
namespace {

constexpr const char* kRight = "mode: songs 1\nintro: 0, play [[iTunes]]\nintroW: 0, play [[iTunes]]\n";

struct Check : testing::Test {
    Check() {
        station.WriteTone("Sounds/a.wav", 440, 0.4, 1);
        station.WriteTone("Sounds/mixed/b.wav", 440, 0.4, 1);
        station.Write("Sounds/mixed/cover.jpg", "picture");
        station.Write("Sounds/text.wav", "no sound");
        std::filesystem::create_directories(station.Path() / "Sounds/none");
        std::filesystem::copy(station.Path() / "Sounds/mixed", station.Path() / "Sounds/one");
        std::filesystem::remove(station.Path() / "Sounds/one/cover.jpg");
    }

    /// The JSON of a check, as "file line:column code", and its status.
    std::pair<std::string, int> Json(const std::string& arguments) const {
        const auto outcome = station.Run("check --json --station . " + arguments);
        std::string told;
        for (const auto& finding : nlohmann::json::parse(outcome.out)) {
            told += (told.empty() ? "" : ", ") +
                    finding.at("file").get<std::string>().substr(sizeof "Programs") + " " +
                    finding.at("line").dump() + ":" + finding.at("column").dump() + " " +
                    finding.at("code").get<std::string>();
        }
        return {told, outcome.status};
    }

    StudioStation station;
};

TEST_F(Check, LooksAtTheStationsFilesAndVoices) {
    const struct {
        const char* lines;
        const char* told;
        int status;
    } cases[] = {
        {"jingle: 0, play Sounds/a.wav\njingle: 0, play Sounds/one\njingle: 0, wait 1",
         "A.txt 4:12 sound-cut", 0},
        {"jingle: 0, play sounds/A.wav\njingle: 0, wait 1", "A.txt 4:17 letter-case", 1},
        {"jingle: 0, play Sounds/b.wav\njingle: 0, wait 1", "A.txt 4:17 missing-sound", 1},
        {"jingle: 0, play Sounds/text.wav\njingle: 0, wait 1", "A.txt 4:17 not-a-sound", 1},
        {"jingle: 0, play Sounds/mixed\njingle: 0, wait 1", "A.txt 4:17 folder-entry", 0},
        {"jingle: 0, play Sounds/none\njingle: 0, wait 1", "A.txt 4:17 empty-folder", 1},
        {"personality: Samanta Reed\njingle: 0, say Hi", "A.txt 4:14 unknown-voice", 1},
        {"personality: en-gb Reed\njingle: 0, say Hi", "", 0},
        {"j_personality: Kioko\njingle: 0, sayj a\njingle: 0, wait 9", "A.txt 4:16 unknown-speaker", 0},
        {"j_personality: 京子\njingle: 0, sayj こんばんは、ようこそ、今夜の番組へ。\njingle: 0, wait 1",
         "A.txt 6:17 short-wait", 0},
    };
    for (const auto& [lines, told, status] : cases) {
        station.Write("Programs/A.txt", std::string(kRight) + lines);
        EXPECT_EQ(Json("A"), std::pair(std::string(told), status)) << lines;
    }
}

TEST_F(Check, TellsInOneLineWhyAFileIsNoProgram) {
    station.Write("Programs/Good.txt", kRight);
    station.Write("Programs/Twice.txt.bak", kRight);
    station.Write("Programs/Big.txt", std::string(10 << 20, 'x'));
    station.Write("Programs/Binary.txt", std::string("\x7F"
                                                     "ELF\0\0\0\0\1\2\3\0",
                                                     12));
    station.Write("Programs/Empty.txt", "");
    std::filesystem::create_directories(station.Path() / "Programs/Folder.txt");
    std::filesystem::create_symlink("/dev/zero", station.Path() / "Programs/Zero.txt");
    ASSERT_EQ(mkfifo((station.Path() / "Programs/Pipe.txt").c_str(), 0600), 0);
    EXPECT_EQ(
        Json(""),
        std::pair(std::string("Big.txt 1:1 too-large, Binary.txt 1:1 binary, Empty.txt 1:1 empty-program, "
                              "Folder.txt 1:1 unreadable, Pipe.txt 1:1 unreadable, "
                              "Twice.txt.bak 1:1 not-a-program, Zero.txt 1:1 unreadable"),
                  1));
    for (const char* call : {"check --station . god", "check --station . Programs/none.txt",
                             "check --playlist none", "check --station . --wach"}) {
        const auto outcome = station.Run(call);
        EXPECT_EQ(outcome.status, 2) << call;
        EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1) << outcome.error;
    }
}

TEST_F(Check, PrintsAsCompilersDoAndWithoutControlCharacters) {
    station.Write("Programs/A.txt",
                  std::string(kRight) + "\tjingle: 0, wait 1 \xE3\x81\x82\x1B\xE3\x81\x82, [[staton]]\n");
    station.Write("Programs/A.txt", std::string(kRight) + "\tjingle: 0, say あ\x1B[2Jい [[staton]]\n");
    EXPECT_EQ(
        station.Run("check --station . A").out,
        "Programs/A.txt:4:24: error: \"[[staton]]\" is not a placeholder and stays as it is; did you mean "
        "\"[[station]]\"? [unknown-placeholder]\n"
        "    4 |         jingle: 0, say あ [2Jい [[staton]]\n"
        "      |                                 ^~~~~~~~~~\n"
        "1 file checked: 1 error, 0 warnings.\n");
}

TEST_F(Check, MendsWhatIsCertainAndNothingElse) {
    const struct {
        std::string before;
        std::string after;
    } cases[] = {
        {std::string("opning : 0, wait 1\r\n") + kRight + "jingle: ０, sya　Hi",
         std::string("opening: 0, wait 1\r\n") + kRight + "jingle: 0, say Hi"},
        {"\xEF\xBB\xBFprogram: A\n", "program: A\n"},
        {"program: \x8D\xA1\x96\xE9\x82\xCC\x83\x89\x83W\x83I\n", "program: 今夜のラジオ\n"},
        {std::string("\xFF\xFE"
                     "m\0o\0d\0e\0:\0 \0a\0l\0l\0",
                     20),
         "mode: all"},
        {"mode: songs  5\n", "mode: songs 5\n"},
        {"program: あ\x8D\xA1\n", "program: あ\x8D\xA1\n"},
        {"mode: minutes 5\nopening: say 5\n", "mode: minutes 5\nopening: say 5\n"},
    };
    for (const auto& [before, after] : cases) {
        const auto file = station.Write("Programs/A.txt", before);
        std::filesystem::permissions(file, std::filesystem::perms(0640));
        const auto outcome = station.Run("check --fix --station . A");
        EXPECT_EQ(ReadBytes(file), after);
        EXPECT_EQ(outcome.out.find("fixed: ") != std::string::npos, before != after) << outcome.out;
        EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0640));
    }
    // Of a guessed encoding the bytes are kept, and hidden: the menu lists all other files.
    EXPECT_EQ(ReadBytes(station.Path() / "Programs/.A.txt.before"), cases[2].before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(station.Path() / "Programs"), {}), 2);
}

TEST_F(Check, TellsWhichPronunciationsAreLeftOut) {
    station.Write("Programs/A.txt", kRight);
    station.Write("Pronunciations.txt", "Ke$ha = Kesha\nSade: shah-day\n");
    const auto outcome = station.Run("check --quick --station .");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("Pronunciations.txt:2:1: warning: there is no \"=\", so it is left out "
                               "[faulty-pronunciation]\n    2 | Sade: shah-day\n"),
              std::string::npos)
        << outcome.out;
}

TEST_F(Check, TellsWhichTracksOfAPlaylistAreMissing) {
    station.WriteTone("Music/a b&c.wav", 440, 0.4, 1);
    station.Write("Music/One.m3u", "#EXTM3U\n#EXTINF:1,A\na b&c.wav\ngone.mp3\nhttp://there/x\n");
    station.Write(
        "Music/Two.xspf",
        "<playlist version=\"1\" "
        "xmlns=\"http://xspf.org/ns/0/\"><trackList>\n<track><location>a%20b&amp;c.wav"
        "</location></track>\n<track><location>d%20&amp;e.wav</location></track>\n</trackList></playlist>\n");
    station.Write("Programs/A.txt", kRight);
    station.Write("Music/Three.pls", "[playlist]\nFile1=a b&c.wav\nFile2=lost.wav\nNumberOfEntries=2\n");
    const struct {
        const char* list;
        const char* told;
    } cases[] = {{"One", "One.m3u:4:1: error"},
                 {"Two", "Two.xspf:3:18: error"},
                 {"Music/Three.pls", "Three.pls:3:7: error"}};
    for (const auto& [list, told] : cases) {
        const auto outcome = station.Run(std::string("check --station . --playlist ") + list + " A");
        EXPECT_NE(outcome.out.find("2 files checked"), std::string::npos) << "the program after it";
        EXPECT_NE(outcome.out.find(told), std::string::npos) << outcome.out;
        EXPECT_NE(outcome.out.find("1 error,"), std::string::npos) << outcome.out;
        EXPECT_EQ(outcome.status, 1);
    }
}

}  // namespace
}  // namespace sorakaze::test
