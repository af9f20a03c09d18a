// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/runtime/Application.h"
#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

using test::TestShow;
using testing::ElementsAre;

/// Outside a show.
void RunToEnd(Thread& thread) {
    thread.Run();
    App.DoEventsWhile([&] { return thread.State() == Thread::kRunning; });
}

/// Variant 0 of `opening` as the file gives it.
void RunOpening(TestShow& show) {
    show.window.readProgram("Show");
    show.window.command = show.window.opening;
    RunToEnd(show.window.commandExecThread);
}

TEST(Interpreter, ExpandsPlaceholdersInOrder) {
    TestShow show(
        "program: Morning [[station]]\nstation: [[band]]\nband: 80\npersonality: Anna P\n"
        "opening: 0, nothing [[PROGRAM]] [[song]] [[name]] [[album]] [[artistinfo]] [[personality]]\n"
        "opening: 0, nothing [[trackno]] [[trackleft]] [[unknown]]\n");
    show.window.song = "\"quoted\" [[name]]";
    show.window.artist = "artist [[program]]";
    show.window.album = "album";
    show.window.wikiContents = "said \"so\"";
    show.window.trackNo = 2;
    RunOpening(show);
    EXPECT_THAT(
        show.trace.All("line "),
        ElementsAre("nothing Morning 80 quoted artist [[program]] artist [[program]] album said so Anna P",
                    "nothing 1 2 [[unknown]]"));
    show.player.count = "unknown";
    RunOpening(show);
    EXPECT_EQ(show.trace.lines.back(), "line nothing 1 -1 [[unknown]]");
}

TEST(Interpreter, CreditsATextOnceAShowWhenItIsSpoken) {
    TestShow show(
        "opening: 0, nothing [[artistinfo]]\nopening: 0, sayj [[song]]\n"
        "opening: 0, sayj So: [[artistinfo]]!\nopening: 0, sayj [[artistinfo]]\n");
    show.window.wikiContents = " Abba sang. ";
    for (const char* address : {"", "http://x/Abba", "http://x/Abba", "http://x/ABC"}) {
        show.window.wikiSource = {"A", address, "L"};
        RunOpening(show);
    }
    EXPECT_THAT(show.trace.All("credit "), ElementsAre("text A http://x/Abba L", "text A http://x/ABC L"));
    EXPECT_EQ(show.trace.lines.at(show.trace.lines.size() - 4), "credit text A http://x/ABC L");
    show.window.wikiContents = "";
    show.window.programStart.Push();
    show.window.tell(ShowEvent::Kind::Credit,
                     {{"what", "text"}, {"title", "A"}, {"address", "http://x/Abba"}, {"licence", "L"}});
    EXPECT_EQ(show.trace.All("credit ").size(), 3u) << "each show has its own";
    show.window.programStart.Push();
}

TEST(Interpreter, CopiesTheTrackButFollowsItsNumber) {
    TestShow show(
        "opening: 0, play [[iTunes]]\nopening: 0, wait 1\nopening: 0, x [[song]] [[trackno]] [[trackleft]]");
    show.window.song = "old";
    show.window.trackNo = 1;
    RunOpening(show);
    EXPECT_EQ(show.window.song.Bytes(), "song 2");
    EXPECT_EQ(show.trace.All("line ").back(), "x old 1 2");
    EXPECT_THAT(show.player.log, ElementsAre("play Library 1"));
}

TEST(Interpreter, BothExitsOfTheLoop) {
    std::string ten;
    for (int i = 0; i < 10; ++i) ten += "opening: 0, x" + std::to_string(i) + "\n";
    TestShow show(ten);
    RunOpening(show);
    EXPECT_EQ(show.trace.All("line ").size(), 10u);
    // An empty line ends the block, one that expansion has emptied does not.
    show.folder.Write("Programs/Show.txt", "opening: 0, [[song]]\nopening: 0, bogus verb\nopening: 0, x");
    RunOpening(show);
    EXPECT_EQ(show.trace.All("line ").size(), 13u);
}

TEST(Interpreter, WaitsInSeconds) {
    const std::pair<std::string, std::int32_t> cases[] = {{"2.5", 150}, {"abc", 0}, {"-3", 0}, {"0.001", 1}};
    for (const auto& [argument, ticks] : cases) {
        TestShow show("opening: 0, saying x\nopening: 0, WAIT " + argument + "\nopening: 0, x");
        RunOpening(show);
        EXPECT_EQ(show.trace.TickOf("line x") - show.trace.TickOf("line WAIT"), ticks) << argument;
    }
}

TEST(Interpreter, SoundsThatAreMissingOrNone) {
    TestShow show("opening: 0, play Sounds/gone.wav\nopening: 0, play Sounds\nopening: 0, x");
    const auto sound = show.folder.Write("Sounds/text.wav", "no sound");
    RunOpening(show);
    EXPECT_EQ(show.trace.All("line ").size(), 3u) << "the block goes on";
    std::filesystem::remove(sound);
    RunOpening(show);
    EXPECT_EQ(show.trace.All("line ").size(), 5u) << "an empty folder ends the thread";
    const std::string gone = "指定したサウンドファイルSounds/gone.wavが存在しません";
    EXPECT_THAT(show.host.Messages(),
                ElementsAre(gone, "指定したファイルSoundsをサウンドとして読み込めませんでした", gone,
                            "NilObjectException: The folder Sounds is empty."));
    EXPECT_EQ(show.host.Details().front(),
              (show.folder / "Sounds/gone.wav").string() + ": there is no such file\nShow.txt, line 1");
    EXPECT_THAT(show.host.Details().back(), testing::EndsWith("\nShow.txt, line 2"));
    EXPECT_EQ(show.trace.All("failed ").size(), 4u) << "each box is told of once";
}

TEST(Interpreter, SpeechThatFailsSaysSo) {
    TestShow show("personality: Anna Parker\nopening: 0, say [[song]]\nopening: 0, say\nopening: 0, x");
    show.window.song = "- a \"song\"";
    const auto say = show.folder.Write(
        "Sorakaze.app/Contents/Resources/say",
        "#!/bin/sh\n[ -z \"$3\" ] || for word; do printf '<%s>' \"$word\"; done > \"$5\"\n");
    std::filesystem::permissions(say, std::filesystem::perms::owner_all | std::filesystem::perms::others_all);
    const auto file = show.runtime.TemporaryFolder() / "temp0.aiff";
    std::vector<std::string> files;
    show.runtime.onMessage = [&](const Message&) { files.push_back(test::ReadBytes(file)); };
    RunOpening(show);
    EXPECT_THAT(show.host.Messages(),
                ElementsAre("読み上げ結果のファイルをサウンドとして読み込めませんでした",
                            "読み上げ結果のサウンドファイルが存在しません"));
    EXPECT_THAT(files, ElementsAre("<-v><Anna><- a song><-o><" + file.string() + ">", ""));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_EQ(show.trace.All("line ").size(), 3u);
}

TEST(PlayerBridge, AKillBetweenParametersLeavesNoCallBehind) {
    TestShow show;
    Thread asking, killer;
    asking.RunEvent = [&] { show.window.iTunesSongInfo("Library", 1); };
    killer.RunEvent = [&] {
        EXPECT_EQ(show.runtime.Scripts().OpenCalls(), 1u);
        asking.Kill();
    };
    asking.Run();
    killer.Run();
    show.Pass(2);
    EXPECT_EQ(show.runtime.Scripts().OpenCalls(), 0u);
}

TEST(Preparation, CleansTheRecordAndChoosesSpellings) {
    const struct {
        const char* record;
        bool japanese;
        const char* result;
    } cases[] = {
        {"Song (Live) - Remix\tThe Artist\tAlbum", false, "song   remix the artist album"},
        {"歌（live) 〜x\tB\tC", true, "歌 x b c"},
        {"A (x\tB) c\tD\tE", false, "a  c d e"},
        {"歌\t人\t集\tYesterday\tPerson\tCollection", false, "yesterday person collection"},
        {"歌\t人\t集\tYesterday\t\tCollection", true, "yesterday 人 collection"},
        {"Plain\tB\tC\tOther\tOther\tOther", false, "plain b c"},
        {"Café\tB\tC\tCafe", false, "cafe b c"},
        {"", false, "  "},
    };
    for (const auto& c : cases) {
        TestShow show;
        show.player.tracks[0].record = c.record;
        show.window.isJapaneseOn = c.japanese;
        RunToEnd(show.window.getNextSong);
        const auto& w = show.window;
        EXPECT_EQ(w.song.Bytes() + " " + w.artist.Bytes() + " " + w.album.Bytes(), c.result) << c.record;
    }
}

}  // namespace
}  // namespace sorakaze
