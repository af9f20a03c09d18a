// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What hosts and the sequencer ask of a show. Called with the baton.
#pragma once

#include <functional>

#include "app/runtime/String.h"

namespace sorakaze {

class mainWindow;
class ShowObserver;

/// When a show ends by itself.
struct ShowLength {
    enum class Unit {
        Endless,
        Tracks,        ///< after `count` tracks
        Minutes,       ///< with the first track that ends after `count` minutes
        WholePlaylist  ///< after the last track
    };
    Unit unit = Unit::Endless;
    double count = 0;
};

/// The length that a program's `mode` asks for: `songs N`, `minites N` or `all`; Endless for any other text.
ShowLength LengthOf(const String& mode);

/// True from the press of the start button to the end of the stop.
bool IsOnAir(const mainWindow& window);

/// True if no thread and no timer is left that could continue a show.
bool IsStalled(const mainWindow& window);

/// What StopForGood takes from a window.
struct ShowHooks {
    std::function<void()> button, block;
    ShowObserver* observer = nullptr;
};

/// Stops the show if one is on the air, and lets no other start. Without this a stop during the wait for a
/// block would let the show go on. Main thread.
ShowHooks StopForGood(mainWindow& window);
/// Lets shows start again. For a host whose event loop has no handler of the stopped show left, and whose
/// threads have ended. Main thread.
void AllowShows(mainWindow& window, ShowHooks hooks);

}  // namespace sorakaze
