// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Whole shows, through what they tell an onlooker.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

using test::TestShow;
using testing::ElementsAre;

/// A program whose blocks all play or wait; `mode` comes in front.
std::string Program(const std::string& mode, const std::string& more = "") {
    return "mode: " + mode +
           "\nopening: 0, wait 2\nintro: 0, wait 1\nintro: 0, play [[iTunes]]\nintro: 0, wait 1\n"
           "introW: 0, play [[iTunes]]\njingle: 0, wait 1\nending: 0, wait 1\n" +
           more;
}

TEST(Sequencer, EndsAsTheModeSays) {
    const std::pair<const char*, int> cases[] = {{"SONGS 1", 1}, {"songs 2", 2},     {"songs", 0},
                                                 {"all", 3},     {"minites 0.1", 1}, {"minites 0.4", 2}};
    for (const auto& [mode, tracks] : cases) {
        SCOPED_TRACE(mode);
        TestShow show(Program(mode));
        show.RunShow();
        EXPECT_FALSE(show.OnAir());
        std::vector<std::string> played, blocks{"opening 0"};
        for (int i = 1; i <= tracks; ++i) played.push_back("play Library " + std::to_string(i));
        played.push_back("stop");
        EXPECT_EQ(show.player.log, played);
        blocks.resize(static_cast<std::size_t>(tracks) + 1, "intro 0");
        blocks.push_back("ending 0");
        auto begun = show.trace.All("block ");
        std::erase(begun, "jingle 0");
        EXPECT_EQ(begun, blocks);
        EXPECT_EQ(show.trace.lines.back(), "end");
        EXPECT_TRUE(show.window.programMenu.Enabled() && show.window.playlistMenu.Enabled());
        if (tracks != 1) continue;
        EXPECT_EQ(show.trace.TickOf("block intro"), 120 + 12) << "a period behind the block's end";
        // The track starts at 192, the intro ends at 252; looks follow at each 12 ticks, the first one past
        // 792 ends it.
        EXPECT_EQ(show.trace.TickOf("block ending"), 792);
        EXPECT_EQ(show.trace.TickOf("end"), 852);
    }
}

TEST(Sequencer, WithoutAModeOrAProgramTheShowGoesOn) {
    TestShow show(Program("minutes 1"));
    show.window.programStart.Push();
    show.Pass(60 * 60 * 5);
    EXPECT_TRUE(show.OnAir());
    EXPECT_GT(show.player.log.size(), 10u) << "tracks past the end are asked for and nothing plays";
    show.window.programStart.Push();
    // A program that is missing is told of, and its show is empty.
    std::filesystem::remove(show.folder.Path() / "Programs/Show.txt");
    show.trace.lines.clear();
    show.window.programStart.Push();
    show.Pass(100);
    EXPECT_TRUE(show.OnAir());
    EXPECT_THAT(show.trace.All("message "), ElementsAre("番組ファイル：Show.txt がありません"));
    EXPECT_GT(show.trace.All("block intro").size(), 3u);
}

TEST(Sequencer, ATrackIsFadedWhereTheSliderStandsThen) {
    TestShow show(Program("songs 1"));
    show.player.tracks[0].ticks = 60 * 500;
    show.window.songDurationSlider.SetValue(10);
    EXPECT_EQ(show.window.songDuration.Text().Bytes(), "30");
    show.RunShow();
    EXPECT_THAT(show.player.log, ElementsAre("play Library 1", "fade", "stop"));
    const auto length = show.trace.TickOf("block ending") - show.trace.TickOf("line play [[iTunes]]");
    EXPECT_NEAR(length, 30 * 60 + 18, 18);

    show.window.songDurationSlider.SetValue(200);
    show.window.programStart.Push();
    show.Pass(60 * 100);
    EXPECT_EQ(show.player.log.size(), 4u);
    show.window.songDurationSlider.SetValue(60);
    show.Pass(13);
    EXPECT_EQ(show.player.log.at(4), "fade") << "moved during a track it counts from the next tick";
}

TEST(Sequencer, AnyOtherWordIsAPlayingTrackAndPausedHasEnded) {
    TestShow show(Program("songs 9"));
    show.player.state = "";
    show.window.programStart.Push();
    show.Pass(400);
    show.player.state = "rewinding";
    show.Pass(2000);
    EXPECT_THAT(show.player.log, ElementsAre("play Library 1"));
    show.player.state = "PAUSED";
    show.Pass(300);
    show.player.state = "";
    EXPECT_EQ(show.player.log[1], "play Library 2");
}

TEST(Sequencer, DrawsCoverAllVariantsAndFollowTheSeed) {
    const auto run = [](std::uint64_t seed) {
        TestShow show(Program("songs 60", "intro: 2, play [[iTunes]]\njingle: 3, wait 1\n"), seed);
        show.player.tracks.assign(60, {"a\tb\tc", 10});
        show.RunShow();
        EXPECT_EQ(std::ranges::count(show.player.log, "play Library 60"), 1) << "empty ones are drawn again";
        return show.trace.All("block ");
    };
    const auto blocks = run(5);
    for (const char* block : {"intro 0", "intro 1", "intro 2", "jingle 1", "jingle 3"})
        EXPECT_THAT(blocks, testing::Contains(block));
    EXPECT_EQ(blocks, run(5));
    EXPECT_NE(blocks, run(6));
    // At every second change or so, but not before the first track.
    EXPECT_TRUE(blocks[1].starts_with("intro"));
    int jingles = 0;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (!blocks[i].starts_with("jingle")) continue;
        ++jingles;
        EXPECT_TRUE(blocks.at(i + 1).starts_with("intro"));
    }
    EXPECT_NEAR(jingles, static_cast<double>(blocks.size()) / 3, 12);
}

TEST(Sequencer, AnOpeningMayPlayTheFirstTrack) {
    TestShow show(Program("songs 2", "opening: 1, play [[iTunes]]\nopening: 0, play [[iTunes]]\n"));
    show.RunShow();
    EXPECT_THAT(show.player.log, ElementsAre("play Library 1", "play Library 2", "stop"));
}

TEST(Sequencer, WikiContentsChooseTheOtherIntroduction) {
    TestShow show(Program("songs 1"));
    show.window.programStart.Push();
    show.Pass(60);
    show.window.wikiContents = "He sang.";
    show.RunOn();
    EXPECT_THAT(show.trace.All("block "), ElementsAre("opening 0", "introW 0", "ending 0"));
}

TEST(Sequencer, AStopInEachStateEndsTheShow) {
    // Opening, the wait after it, intro, watching; the second press starts a new show that runs to its end.
    for (const std::int32_t at : {0, 60, 121, 140, 300}) {
        SCOPED_TRACE(at);
        TestShow show(Program("songs 1"));
        show.window.programStart.Push();
        show.Pass(at);
        show.window.programStart.Push();
        EXPECT_FALSE(show.OnAir());
        EXPECT_EQ(show.window.mainTimer.Mode(), 0);
        const auto events = show.trace.lines.size();
        show.Pass(600);
        EXPECT_LE(show.trace.lines.size(), events + 1) << "nothing but a preparation runs on";
        show.player.log.clear();
        show.RunShow();
        EXPECT_THAT(show.player.log, ElementsAre("play Library 1", "stop"));
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
    show.RunOn();
    EXPECT_THAT(show.player.log, ElementsAre("play Library 1", "stop", "play Library 1", "stop"));
}

TEST(Sequencer, APressWhileTheLastPreparationStillRunsRaises) {
    TestShow show(Program("songs 1"));
    show.window.getNextSong.RunEvent = [] { WaitWhile([] { return Ticks() < 500; }); };
    show.runtime.Events().Post([&] { show.window.programStart.Push(); });
    show.Pass(10);
    show.runtime.Events().Post([&] { show.window.programStart.Push(); });
    show.runtime.Events().Post([&] { show.window.programStart.Push(); });
    show.Pass(10);
    EXPECT_THAT(show.host.Messages(), ElementsAre("ThreadAlreadyRunningException: The thread runs already."));
    EXPECT_TRUE(show.OnAir());
}

TEST(Window, FillsItsMenus) {
    TestShow show;
    for (const char* name : {"a.txt.bak", "notes.rtf", ".hidden.txt", " blank.txt"})
        show.folder.Write(std::string("Programs/") + name, "");
    mainWindow window;
    window.Event_Open();
    EXPECT_THAT(window.programMenu.Rows(), ElementsAre(" blank", "a", "notes.rtf", "Show"));
    EXPECT_THAT(window.playlistMenu.Rows(), ElementsAre("Library", "Evening"));
    EXPECT_EQ(window.playlistMenu.Text().Bytes(), "Library");
    std::filesystem::remove_all(show.folder.Path() / "Sorakaze.app");
    mainWindow bare;
    EXPECT_THROW(bare.Event_Open(), NilObjectException);
}

TEST(Window, AThousandPresses) {
    TestShow show(Program("songs 3"));
    for (int i = 0; i < 1000; show.Pass(i++ % 7)) show.window.programStart.Push();
    EXPECT_FALSE(show.OnAir());
    EXPECT_TRUE(show.host.Messages().empty());
}

}  // namespace
}  // namespace sorakaze
