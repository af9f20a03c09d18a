// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The demo library: what its tracks and playlists are called and who plays them.
#pragma once

#include <span>

#include "station/synth/Picture.h"
#include "station/synth/Sound.h"

namespace sorakaze::station {

/// All text is UTF-8. The sort spellings are Latin letters for what is written otherwise; empty where there
/// is no need.
struct Track {
    const char* file;  ///< relative to Music; its ending chooses the format
    Stereo (*play)();
    Color (*cover)(double x, double y);
    PictureFormat coverFormat;
    const char* title;
    const char* artist;
    const char* album;
    int number;  ///< on the album
    int year;
    const char* genre;
    const char* titleSort = "";
    const char* artistSort = "";
    const char* albumSort = "";
};

std::span<const Track> Tracks();

struct Playlist {
    const char* file;             ///< relative to Music; its ending (.m3u8, .pls, .xspf) chooses the format
    std::span<const int> tracks;  ///< places in Tracks(), from 0
};

std::span<const Playlist> Playlists();

/// The bytes of a playlist. `seconds` are the lengths of all of Tracks().
std::string PlaylistText(const Playlist& playlist, std::span<const int> seconds);

}  // namespace sorakaze::station
