// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The playlist formats, each a pure function from a file's bytes to the entries that can stand for tracks of
// the user's own. Nothing here looks at the disk, and nothing fails: what can't be read gives no entries.
// Network addresses, other playlists and entries without a place are no tracks and don't count.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "player/TrackText.h"

namespace sorakaze::player {

/// No list is read any further than this.
inline constexpr std::size_t kMostTracks = 1'000'000;

struct PlaylistEntry {
    enum class Form {
        Path,  ///< A path as the playlist spells it: any encoding, any slashes, relative or absolute.
        Url,   ///< The path of a URL, percent-escapes included.
    };
    std::string location;  ///< raw bytes, never empty, no NUL
    Form form = Form::Path;
    TrackText text;  ///< what the playlist says of the track

    bool operator==(const PlaylistEntry&) const = default;
};

/// M3U and M3U8 alike: real files keep to neither encoding.
std::vector<PlaylistEntry> ParseM3u(std::string_view bytes);

std::vector<PlaylistEntry> ParsePls(std::string_view bytes);

std::vector<PlaylistEntry> ParseXspf(std::string_view bytes);

/// A music library exported as a property list: one pool of tracks and the playlists that draw on it.
struct LibraryXml {
    struct List {
        std::string name;
        std::vector<std::uint32_t> tracks;  ///< indices into LibraryXml::tracks
    };
    std::vector<PlaylistEntry> tracks;
    /// Without the sections that every library has (all its music, podcasts and the like), hidden lists and
    /// folders.
    std::vector<List> lists;
};

/// Empty for a file that is no such library.
std::optional<LibraryXml> ParseLibraryXml(std::string_view bytes);

/// The entry for a location as it stands in a playlist: a path, or a URL where it begins like one. `form` is
/// what a location without a scheme is. Empty where it can't be a track.
std::optional<PlaylistEntry> EntryAt(std::string_view location, PlaylistEntry::Form form);

/// True for a path whose name ends like a playlist's.
bool IsPlaylistName(std::string_view path);

/// %XX turned into bytes; escapes that aren't any stay as they are.
std::string PercentDecoded(std::string_view text);

/// ASCII only.
std::string LowerCased(std::string_view text);

/// The next line of `rest`, ended by CR, LF, CR LF or the end, and `rest` moved behind it.
std::string_view TakeLine(std::string_view& rest);

}  // namespace sorakaze::player
