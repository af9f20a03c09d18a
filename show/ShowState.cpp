// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "show/ShowState.h"

#include <cassert>
#include <utility>

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

ShowHooks StopForGood(mainWindow& window) {
    assert(Runtime::Current().Threads().OnMainThread());
    if (IsOnAir(window)) window.programStart.Push();
    return {std::exchange(window.programStart.Action, nullptr),
            std::exchange(window.commandExecThread.RunEvent, nullptr),
            std::exchange(window.observer, nullptr)};
}

void AllowShows(mainWindow& window, ShowHooks hooks) {
    assert(Runtime::Current().Threads().OnMainThread());
    window.programStart.Action = std::move(hooks.button);
    window.commandExecThread.RunEvent = std::move(hooks.block);
    window.observer = hooks.observer;
}

}  // namespace sorakaze
