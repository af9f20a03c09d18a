// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The sequencer: what happens between two blocks.
#include "app/runtime/Application.h"
#include "app/runtime/Random.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

/// `songs N`, `minites N` or `all`; any other mode never ends a show.
bool IsShowOver(mainWindow& window) {
    const String word = NthField(window.mode, " ", 1);
    if (word == "songs") return Val(NthField(window.mode, " ", 2)) < window.trackNo;
    if (word == "minites") return Val(NthField(window.mode, " ", 2)) * 60 * 60 < Ticks() - window.startTicks;
    if (word == "all") return Val(window.getSongCount(window.playlistMenu.Text())) < window.trackNo;
    return false;
}

/// Serves the event loop until the block has ended. A press of the button is handled within.
void AwaitBlock(mainWindow& window) {
    App.DoEventsWhile([&window] { return window.commandExecThread.State() == Thread::kRunning; });
}

}  // namespace

void mainWindow::mainTimer_Action() {
    Random random;
    const bool ended = iTunesState() == "stopped" || iTunesState() == "paused";
    if (!ended) {
        const double limit = songDurationSlider.Value();
        if (Val(iTunesPlayPosition()) >= limit) iTunesFadeout();
        return;
    }

    mainTimer.SetMode(Timer::kOff);
    timerMode = Timer::kOff;
    if (commandExecThread.State() == Thread::kRunning) return;
    if (IsShowOver(*this)) {
        doEnding();
        return;
    }
    if (trackNo > 1 && random.InRange(0, 1) == 1) {
        section = random.InRange(0, jingleCount);
        command = jingle;
        timerMode = Timer::kOff;
        commandExecThread.Run();
        AwaitBlock(*this);
    }
    // Also after a stop within that wait: the show then goes on with the next track.
    timerMode = Timer::kMultiple;
    if (!wikiContents.IsEmpty()) {
        section = random.InRange(0, introWCount);
        command = IntroW;
    } else {
        section = random.InRange(0, introCount);
        command = intro;
    }
    commandExecThread.Run();
}

void mainWindow::doEnding() {
    Random random;
    section = random.InRange(0, endingCount);
    command = ending;
    timerMode = Timer::kOff;
    commandExecThread.Run();
    AwaitBlock(*this);
    // Takes whichever path the caption calls for: after a stop within that wait a new show begins.
    programStart.Push();
}

}  // namespace sorakaze
