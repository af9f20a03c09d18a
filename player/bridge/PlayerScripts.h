// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The numbers of the player's scripts, and the player for the user's own files as what runs them.
#pragma once

#include <cstdint>

#include "app/runtime/Scripts.h"

namespace sorakaze {

namespace player {
class LocalPlayer;
}

enum class PlayerScript : std::int32_t {
    getSongInfo = 168,     ///< (playlist, number): the track-info record
    getPlayerState = 169,  ///< "stopped", "paused" or another word
    getPlaylists = 170,    ///< the playlists' names joined by ", "
    getPosition = 171,     ///< seconds played, in decimal
    fadeOutTrack = 172,    ///< returns when the track has ended
    playTrack = 173,       ///< (playlist, number): returns at once
    stopTrack = 174,
    countSongs = 175,  ///< (playlist): in decimal
};

/// Registers `player` for the eight numbers. It outlives the table's use.
void RegisterPlayerScripts(ScriptTable& scripts, player::LocalPlayer& player);

}  // namespace sorakaze
