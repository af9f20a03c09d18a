// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Whole shows, through what they tell an onlooker.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

using test::TestShow;

/// A program whose blocks all play or wait; `mode` comes in front.
std::string Program(const std::string& mode, const std::string& more = "") {
    return "mode: " + mode +
           "\nopening: 0, wait 2\nintro: 0, wait 1\nintro: 0, play [[iTunes]]\nintro: 0, wait 1\n"
           "introW: 0, play [[iTunes]]\njingle: 0, wait 1\nending: 0, wait 1\n" +
           more;
}

std::vector<std::string> WithoutJingles(std::vector<std::string> blocks) {
    std::erase(blocks, "jingle 0");
    return blocks;
}

TEST(Sequencer, EndsAsTheModeSays) {
    const struct {
        const char* mode;
        int tracks;
    } cases[] = {{"songs 2", 2}, {"SONGS 1", 1},     {"songs 0", 0},    {"songs", 0},
                 {"all", 3},     {"minites 0.1", 1}, {"minites 0.4", 2}};
    for (const auto& c : cases) {
        TestShow show(Program(c.mode));
        show.RunShow();
        EXPECT_FALSE(show.OnAir()) << c.mode;
        std::vector<std::string> played;
        for (int i = 1; i <= c.tracks; ++i) played.push_back("play Library " + std::to_string(i));
        played.push_back("stop");
        EXPECT_EQ(show.player.log, played) << c.mode;
        std::vector<std::string> blocks{"opening 0"};
        blocks.insert(blocks.end(), static_cast<std::size_t>(c.tracks), "intro 0");
        blocks.push_back("ending 0");
        EXPECT_EQ(WithoutJingles(show.trace.All("block ")), blocks) << c.mode;
        EXPECT_EQ(show.trace.lines.back(), "end") << c.mode;
        EXPECT_TRUE(show.window.programMenu.Enabled() && show.window.playlistMenu.Enabled());
    }
}

TEST(Sequencer, WithoutAModeTheShowGoesOnPastThePlaylist) {
    for (const char* mode : {"", "minutes 1", "song 1"}) {
        TestShow show(Program(mode));
        show.window.programStart.Push();
        show.Pass(60 * 60 * 5);
        EXPECT_TRUE(show.OnAir()) << mode;
        EXPECT_GT(show.player.log.size(), 10u) << "tracks past the end are asked for and nothing plays";
        EXPECT_GT(show.window.trackNo, 10);
    }
}

TEST(Sequencer, TheTimesOfAChange) {
    TestShow show(Program("songs 1"));
    show.window.programStart.Push();
    show.RunOn();
    EXPECT_EQ(show.trace.TickOf("block opening"), 0);
    EXPECT_EQ(show.trace.TickOf("block intro"), 120 + 12) << "a period behind the block's end";
    // The track starts at 192, the intro ends at 252; looks follow at each 12 ticks, the first one past 792
    // ends it.
    EXPECT_EQ(show.trace.TickOf("block ending"), 792);
    EXPECT_EQ(show.trace.TickOf("end"), 852);
}

TEST(Sequencer, ATrackIsFadedWhereTheSliderStands) {
    TestShow show(Program("songs 2"));
    show.player.tracks[0].ticks = show.player.tracks[1].ticks = 60 * 300;
    show.window.songDurationSlider.SetValue(10);
    EXPECT_EQ(show.window.songDurationSlider.Value(), 30);
    EXPECT_EQ(show.window.songDuration.Text().Bytes(), "30");
    show.RunShow();
    EXPECT_EQ(show.player.log,
              (std::vector<std::string>{"play Library 1", "fade", "play Library 2", "fade", "stop"}));
    const auto first = show.trace.TickOf("line play [[iTunes]]");
    const auto next = show.trace.TickOf("block", 9);
    EXPECT_GE(next - first, 30 * 60);
    EXPECT_LE(next - first, 30 * 60 + 36);
}

TEST(Sequencer, TheSliderMovedDuringATrackCountsFromTheNextTick) {
    TestShow show(Program("songs 1"));
    show.player.tracks[0].ticks = 60 * 500;
    show.window.programStart.Push();
    show.Pass(60 * 100);
    EXPECT_EQ(show.player.log.size(), 1u);
    show.window.songDurationSlider.SetValue(60);
    show.Pass(13);
    EXPECT_EQ(show.player.log.at(1), "fade");
}

TEST(Sequencer, AnyOtherWordIsAPlayingTrackAndPausedHasEnded) {
    TestShow show(Program("songs 9"));
    show.player.state = "";
    show.window.programStart.Push();
    show.Pass(400);
    show.player.state = "rewinding";
    show.Pass(2000);
    EXPECT_EQ(show.player.log, (std::vector<std::string>{"play Library 1"}));
    show.player.state = "PAUSED";
    show.Pass(300);
    show.player.state = "";
    EXPECT_EQ(show.player.log[1], "play Library 2");
}

TEST(Sequencer, JinglesComeAtEverySecondChangeOrSoButNotBeforeTheFirstTrack) {
    TestShow show(Program("songs 200"));
    show.player.tracks.assign(200, {"a\tb\tc", 10});
    show.RunShow();
    const auto blocks = show.trace.All("block ");
    const auto jingles = std::count(blocks.begin(), blocks.end(), "jingle 0");
    EXPECT_GT(jingles, 70);
    EXPECT_LT(jingles, 130);
    EXPECT_EQ(blocks[1], "intro 0");
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (blocks[i] != "jingle 0") continue;
        EXPECT_EQ(blocks.at(i + 1), "intro 0");
    }
}

TEST(Sequencer, DrawsCoverAllVariantsAndFollowTheSeed) {
    const auto run = [](std::uint64_t seed) {
        TestShow show(
            Program("songs 60", "intro: 1, play [[iTunes]]\nintro: 2, play [[iTunes]]\njingle: 3, wait 1\n"),
            seed);
        show.player.tracks.assign(60, {"a\tb\tc", 10});
        show.RunShow();
        return show.trace.lines;
    };
    const auto lines = run(5);
    const std::set<std::string> drawn(lines.begin(), lines.end());
    for (const char* block :
         {"block intro 0", "block intro 1", "block intro 2", "block jingle 1", "block jingle 3"}) {
        EXPECT_TRUE(drawn.contains(block)) << block;
    }
    EXPECT_EQ(lines, run(5));
    EXPECT_NE(lines, run(6));
}

TEST(Sequencer, AnEmptyVariantIsDrawnAgain) {
    TestShow show(Program("songs 3", "intro: 2, play [[iTunes]]\n"));
    show.RunShow();
    EXPECT_EQ(std::ranges::count(show.player.log, "play Library 3"), 1);
}

TEST(Sequencer, WikiContentsChooseTheOtherIntroduction) {
    TestShow show(Program("songs 1"));
    show.window.programStart.Push();
    show.Pass(60);
    show.window.wikiContents = "He sang.";
    show.RunOn();
    EXPECT_EQ(show.trace.All("block "), (std::vector<std::string>{"opening 0", "introW 0", "ending 0"}));
}

TEST(Sequencer, AnOpeningMayPlayTheFirstTrack) {
    TestShow show(Program("songs 2", "opening: 1, play [[iTunes]]\nopening: 0, play [[iTunes]]\n"));
    show.RunShow();
    EXPECT_EQ(show.player.log, (std::vector<std::string>{"play Library 1", "play Library 2", "stop"}));
}

TEST(Sequencer, AStopInEachStateEndsTheShow) {
    // Opening, the wait behind it, intro, watching; the second press starts a new show that runs to its end.
    for (const std::int32_t at : {0, 1, 60, 121, 140, 200, 300, 700}) {
        TestShow show(Program("songs 1"));
        show.window.programStart.Push();
        show.Pass(at);
        show.window.programStart.Push();
        EXPECT_FALSE(show.OnAir()) << at;
        EXPECT_EQ(show.window.mainTimer.Mode(), 0) << at;
        EXPECT_EQ(show.window.commandExecThread.State(), Thread::kNotRunning) << at;
        const auto events = show.trace.lines.size();
        show.Pass(600);
        EXPECT_LE(show.trace.lines.size(), events + 1) << "nothing but a preparation runs on: " << at;
        show.player.log.clear();
        show.RunShow();
        EXPECT_EQ(show.player.log, (std::vector<std::string>{"play Library 1", "stop"})) << at;
    }
}

TEST(Sequencer, AStopDuringTheJingleLetsTheShowGoOn) {
    int met = 0;
    for (std::uint64_t seed = 1; seed < 20; ++seed) {
        TestShow show(Program("songs 3"), seed);
        Thread user;
        std::size_t events = 0;
        user.RunEvent = [&] {
            WaitWhile([&] { return show.window.command != show.window.jingle && show.OnAir(); });
            if (!show.OnAir()) return;
            ++met;
            show.runtime.Events().Post([&] {
                show.window.programStart.Push();
                EXPECT_FALSE(show.OnAir());
                events = show.trace.lines.size();
            });
        };
        show.window.programStart.Push();
        user.Run();
        show.Pass(60 * 30);
        if (events == 0) continue;
        EXPECT_FALSE(show.OnAir()) << "with the caption at rest the show goes on all the same";
        EXPECT_EQ(show.trace.lines.at(events), "block intro 0");
        EXPECT_TRUE(show.window.programMenu.Enabled());
        EXPECT_EQ(show.window.mainTimer.Mode(), 2);
    }
    EXPECT_GT(met, 3);
}

TEST(Sequencer, AStopDuringTheEndingBeginsANewShow) {
    TestShow show(Program("songs 1"));
    show.window.programStart.Push();
    show.runtime.Events().DoEventsWhile([&] { return show.window.command != show.window.ending; });
    show.runtime.Events().Post([&] { show.window.programStart.Push(); });
    show.Pass(30);
    EXPECT_TRUE(show.OnAir());
    EXPECT_EQ(show.trace.All("show ").size(), 2u);
    show.RunOn();
    EXPECT_EQ(show.player.log,
              (std::vector<std::string>{"play Library 1", "stop", "play Library 1", "stop"}));
}

TEST(Sequencer, ATickDuringABlockStalls) {
    TestShow show(Program("songs 3", "opening: 0, wait 10\n"));
    show.window.programStart.Push();
    show.Pass(60);
    show.window.mainTimer.SetMode(Timer::kMultiple);
    show.Pass(3000);
    EXPECT_TRUE(show.OnAir());
    EXPECT_EQ(show.window.mainTimer.Mode(), 0);
    EXPECT_EQ(show.trace.All("block "), (std::vector<std::string>{"opening 0"}));
    show.window.programStart.Push();
    EXPECT_FALSE(show.OnAir());
}

TEST(Sequencer, AMissingProgramIsToldAndTheShowGoesOnEmpty) {
    TestShow show("mode: songs 1\n");
    std::filesystem::remove(show.folder.Path() / "Programs/Show.txt");
    show.window.programStart.Push();
    show.Pass(100);
    EXPECT_TRUE(show.OnAir());
    EXPECT_EQ(show.trace.All("message "), (std::vector<std::string>{"番組ファイル：Show.txt がありません"}));
    EXPECT_GT(show.trace.All("block intro").size(), 3u);
    show.window.programStart.Push();
    EXPECT_FALSE(show.OnAir());
}

TEST(Sequencer, APressWhileTheLastPreparationStillRunsRaises) {
    TestShow show(Program("songs 1"));
    show.window.getNextSong.RunEvent = [] { WaitWhile([] { return Ticks() < 500; }); };
    show.runtime.Events().Post([&] { show.window.programStart.Push(); });
    show.Pass(10);
    show.runtime.Events().Post([&] { show.window.programStart.Push(); });
    show.runtime.Events().Post([&] { show.window.programStart.Push(); });
    show.Pass(10);
    EXPECT_EQ(show.host.Messages(),
              (std::vector<std::string>{"ThreadAlreadyRunningException: The thread runs already."}));
    EXPECT_TRUE(show.OnAir());
}

TEST(Window, FillsItsMenus) {
    TestShow show;
    for (const char* name : {"a.txt.bak", "notes.rtf", ".hidden.txt", " blank.txt"}) {
        show.folder.Write(std::string("Programs/") + name, "");
    }
    std::filesystem::create_directories(show.folder.Path() / "Programs/x");
    mainWindow window;
    window.Event_Open();
    std::set<std::string> rows;
    for (const auto& row : window.programMenu.Rows()) rows.insert(row.Bytes());
    EXPECT_EQ(rows, (std::set<std::string>{"Show", "a", "notes.rtf", " blank", "x"}));
    ASSERT_EQ(window.playlistMenu.Rows().size(), 2u);
    EXPECT_EQ(window.playlistMenu.Text().Bytes(), "Library");
    EXPECT_EQ(window.resourceFolder->Path(), show.folder.Path() / "Sorakaze.app/Contents/Resources");
    std::filesystem::remove_all(show.folder.Path() / "Sorakaze.app");
    mainWindow bare;
    EXPECT_THROW(bare.Event_Open(), NilObjectException);
}

TEST(Window, AThousandPresses) {
    TestShow show(Program("songs 3"));
    for (int i = 0; i < 1000; ++i) {
        show.window.programStart.Push();
        show.Pass(i % 7);
    }
    EXPECT_FALSE(show.OnAir());
    EXPECT_TRUE(show.host.Messages().empty());
}

}  // namespace
}  // namespace sorakaze
