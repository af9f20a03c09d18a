// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Behaviours of docs/kept-behaviour.md that no other test holds.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

using test::TestShow;
using testing::ElementsAre;

/// Replaces a script of the player by one that counts its calls and answers `answer`.
void CountCalls(TestShow& show, PlayerScript script, const char* answer, int& calls) {
    show.runtime.Scripts().Register(static_cast<std::int32_t>(script), [answer, &calls](const auto&) {
        ++calls;
        return String(answer);
    });
}

TEST(KeptBehaviour, ASecondShowStillKnowsTheFirstOnesTrack) {
    TestShow show("mode: songs 1\nopening: 0, x [[song]]; [[trackno]]\nintro: 0, play [[iTunes]]\n");
    show.RunShow();
    show.RunShow();
    EXPECT_THAT(show.trace.All("line x "), ElementsAre("; -1", "song 2; -1"));
}

TEST(KeptBehaviour, EveryLineAsksForTheCount) {
    TestShow show("opening: 0, x\nopening: 0, x\nopening: 0, x\n");
    int calls = 0;
    CountCalls(show, PlayerScript::countSongs, "3", calls);
    show.window.programStart.Push();
    show.Pass(2);
    EXPECT_EQ(calls, 3);
}

TEST(KeptBehaviour, ATickAsksTwiceForTheStateAndFadesAgain) {
    TestShow show("opening: 0, wait 0\n");
    int states = 0;
    int fades = 0;
    CountCalls(show, PlayerScript::getPlayerState, "playing", states);
    CountCalls(show, PlayerScript::fadeOutTrack, "", fades);
    int positions = 0;
    CountCalls(show, PlayerScript::getPosition, "600", positions);
    show.window.programStart.Push();
    show.Pass(60);
    EXPECT_GT(positions, 3);
    EXPECT_EQ(states, 2 * positions);
    EXPECT_EQ(fades, positions);
}

TEST(KeptBehaviour, ATrackThatEndsWhileABlockRunsStopsTheTimer) {
    TestShow show("opening: 0, wait 1\nintro: 0, x\n");
    show.window.programStart.Push();
    show.window.mainTimer.SetMode(Timer::kMultiple);
    show.Pass(30);
    EXPECT_EQ(show.window.mainTimer.Mode(), Timer::kOff);
    show.Pass(600);
    EXPECT_EQ(show.window.mainTimer.Mode(), Timer::kOff);
    EXPECT_THAT(show.trace.All("block "), ElementsAre("opening 0"));
    EXPECT_TRUE(show.OnAir());
}

TEST(KeptBehaviour, OneWordIsNoVoiceAndAKilledLineLeavesItsFile) {
    TestShow show("personality: Anna\nopening: 0, say x\n");
    const auto say = show.folder.Write("Sorakaze.app/Contents/Resources/say",
                                       "#!/bin/sh\nprintf '%s' \"$2\" > \"$5\"\nexit 3\n");
    std::filesystem::permissions(say, std::filesystem::perms::owner_all | std::filesystem::perms::others_all);
    const auto file = show.runtime.TemporaryFolder() / "temp0.aiff";
    show.host.hold = true;
    show.runtime.onMessage = [&](const Message&) {
        show.runtime.Events().Post([&] { show.window.programStart.Push(); });
    };
    show.window.programStart.Push();
    show.Pass(20);
    EXPECT_FALSE(show.OnAir());
    EXPECT_EQ(test::ReadBytes(file), "Alex");
}

TEST(KeptBehaviour, TheLogAndTheViewerAreOutOfSight) {
    const TestShow show;
    const mainWindow& w = show.window;
    EXPECT_GT(w.resultField.Top, w.Height);
    EXPECT_GT(w.voiceHTMLViewer.Left, w.Width);
    EXPECT_TRUE(w.resultField.Visible && w.voiceHTMLViewer.Visible);
    EXPECT_THAT(w.resultField.Text().Bytes(), testing::IsEmpty());
    EXPECT_EQ(w.iTunesApp, nullptr);
}

}  // namespace
}  // namespace sorakaze
