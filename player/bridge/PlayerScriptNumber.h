// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The numbers by which the show calls the player's scripts, whichever player runs them.
#pragma once

#include <cstdint>

namespace sorakaze {

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

}  // namespace sorakaze
