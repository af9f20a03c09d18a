// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The sequencer: what happens between two blocks.
#include "app/runtime/Application.h"
#include "app/runtime/Random.h"
#include "show/ShowState.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

bool IsShowOver(mainWindow& window) {
    const ShowLength length = LengthOf(window.mode);
    switch (length.unit) {
        case ShowLength::Unit::Tracks:
            return length.count < window.trackNo;
        case ShowLength::Unit::Minutes:
            return length.count * 60 * kTicksPerSecond < Ticks() - window.startTicks;
        case ShowLength::Unit::WholePlaylist:
            return Val(window.getSongCount(window.playlistMenu.Text())) < window.trackNo;
        case ShowLength::Unit::Endless:
            break;
    }
    return false;
}

/// Serves the event loop until the block has ended. A press of the button during the wait is handled.
void AwaitBlock(const Thread& block) {
    App.DoEventsWhile([&block] { return block.State() == Thread::kRunning; });
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
        AwaitBlock(commandExecThread);
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
    AwaitBlock(commandExecThread);
    // Takes whichever path the caption calls for: after a stop within that wait a new show begins.
    programStart.Push();
}

}  // namespace sorakaze
