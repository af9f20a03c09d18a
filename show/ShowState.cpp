// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "show/ShowState.h"

#include <cassert>

#include "app/runtime/Runtime.h"
#include "show/mainWindow.h"

namespace sorakaze {

ShowLength LengthOf(const String& mode) {
    const String word = NthField(mode, " ", 1);
    const double count = Val(NthField(mode, " ", 2));
    if (word == "songs") return {ShowLength::Unit::Tracks, count};
    if (word == "minites") return {ShowLength::Unit::Minutes, count};  // kept behaviour 25
    if (word == "all") return {ShowLength::Unit::WholePlaylist, 0};
    return {};
}

bool IsOnAir(const mainWindow& window) {
    return !(window.programStart.Caption() == kStartCaption);
}

bool IsStalled(const mainWindow& window) {
    return window.mainTimer.Mode() == Timer::kOff && window.commandExecThread.State() != Thread::kRunning &&
           window.getNextSong.State() != Thread::kRunning;
}

void StopForGood(mainWindow& window) {
    assert(Runtime::Current().Threads().OnMainThread());
    if (IsOnAir(window)) window.programStart.Push();
    window.observer = nullptr;
    window.programStart.Action = nullptr;
    window.commandExecThread.RunEvent = nullptr;
}

}  // namespace sorakaze
