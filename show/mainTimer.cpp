// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The sequencer: decides what happens between two blocks.
#include <cassert>

#include "app/runtime/Application.h"
#include "app/runtime/Random.h"
#include "show/ShowState.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

/// Kept behaviour 26.
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
    assert(Runtime::Current().Threads().OnMainThread());
    Random random;
    // Kept behaviours 20, 21 and 22.
    const bool ended = iTunesState() == "stopped" || iTunesState() == "paused";
    if (!ended) {
        const double limit = songDurationSlider.Value();
        if (Val(iTunesPlayPosition()) >= limit) iTunesFadeout();  // kept behaviour 23
        return;
    }

    mainTimer.SetMode(Timer::kOff);
    timerMode = Timer::kOff;
    if (commandExecThread.State() == Thread::kRunning) return;  // kept behaviour 24
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
    // Kept behaviour 16: also after a stop during the jingle.
    timerMode = Timer::kMultiple;
    // Kept behaviours 27 and 28.
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
    // Kept behaviour 17: after a stop during the ending this begins a show.
    programStart.Push();
}

}  // namespace sorakaze
