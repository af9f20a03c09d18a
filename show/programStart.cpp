// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The button's two paths.
#include <cassert>

#include "app/runtime/Random.h"
#include "app/runtime/Runtime.h"
#include "show/mainWindow.h"
#include "sound/MixingEngine.h"

namespace sorakaze {

void mainWindow::programStart_Action() {
    assert(Runtime::Current().Threads().OnMainThread());
    Random random;
    if (programStart.Caption() == kStartCaption) {
        beginShow(random);
    } else {
        endShow();
    }
}

void mainWindow::beginShow(Random& random) {
    programMenu.SetEnabled(false);
    playlistMenu.SetEnabled(false);
    programStart.SetCaption(kStopCaption);
    trackNo = 0;
    startTicks = Ticks();
    lookupFailures.clear();
    toldOnce.clear();
    Runtime::Current().BeginShow();
    // A file that ended its decoder is tried again in each show.
    if (auto* engine = Runtime::Current().Engine()) engine->ForgetBadFiles();
    tell(ShowEvent::Kind::Show, {{"program", programMenu.Text()}, {"playlist", playlistMenu.Text()}});
    readProgram(programMenu.Text());
    section = random.InRange(0, openingCount);
    command = opening;
    timerMode = Timer::kMultiple;
    // Kept behaviours 18 and 19.
    commandExecThread.Run();
    getNextSong.Run();
}

void mainWindow::endShow() {
    timerMode = Timer::kOff;
    mainTimer.SetMode(Timer::kOff);
    fadeOut(soundData, 0.0);
    fadeOut(sayData, 0.0);
    commandExecThread.Kill();
    iTunesStop();
    programMenu.SetEnabled(true);
    playlistMenu.SetEnabled(true);
    programStart.SetCaption(kStartCaption);
    tell(ShowEvent::Kind::End);
}

}  // namespace sorakaze
