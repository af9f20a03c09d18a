// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The playlist formats, each a parser that takes a file's bytes piece by piece and gives the entries that can
// mean tracks of the user's own. Nothing here reads the disk, and nothing fails: what can't be read
// gives no entries. Network addresses, other playlists and entries without a place or a title are no
// tracks and don't count. The time is linear in the file's size, and the memory is bounded whatever the file
// holds: what goes beyond the bounds is left out.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "player/TrackText.h"

namespace sorakaze::player {

/// No list is read any further than this, in entries and in bytes of what they say.
inline constexpr std::size_t kMostTracks = 500'000;
inline constexpr std::size_t kMostTrackBytes = std::size_t{64} << 20;
/// What the system takes for a path, in bytes, and the longest spelling of one: each byte as %XX.
inline constexpr std::size_t kLongestPath = 4096;
inline constexpr std::size_t kLongestText = 3 * kLongestPath;
/// Lists of one library.
inline constexpr std::size_t kMostLists = 10'000;

/// A part of a long file, in the frames of a CD: 75 a second.
struct FilePart {
    std::int32_t begin = 0;
    std::int32_t end = 0;  ///< 0: the file's end

    bool IsWholeFile() const { return begin == 0 && end == 0; }
    bool operator==(const FilePart&) const = default;
};

struct PlaylistEntry {
    enum class Form {
        Path,     ///< A path as the playlist spells it: any encoding, any slashes, relative or absolute.
        Url,      ///< The path of a URL, percent-escapes included.
        Nowhere,  ///< The playlist names a title and no place.
    };
    std::string location;  ///< raw bytes without NUL, empty for Nowhere only
    Form form = Form::Path;
    FilePart part{};                 ///< of a cue sheet's track
    std::uint32_t milliseconds = 0;  ///< the track's length where the playlist states it
    std::string words;               ///< what the playlist says of the track, as TrackText::Packed gives it

    bool operator==(const PlaylistEntry&) const = default;
};

struct ParsedPlaylist {
    struct List {
        std::string name;
        std::vector<std::uint32_t> tracks;  ///< indices into ParsedPlaylist::tracks
    };
    std::vector<PlaylistEntry> tracks;
    /// A music library exported as a property list: one pool of tracks, and the playlists that draw on it.
    bool isLibrary = false;
    /// Without the sections that every library has (all its music, podcasts and the like), hidden lists and
    /// folders.
    std::vector<List> lists;
    /// The list asks to be played in an order of each show's own.
    bool isShuffled = false;
    std::size_t addresses = 0;  ///< on the network, which are left out
    bool isCut = false;         ///< the list is longer than is read
};

class PlaylistParser {
  public:
    PlaylistParser() = default;
    virtual ~PlaylistParser() = default;
    PlaylistParser(const PlaylistParser&) = delete;
    PlaylistParser& operator=(const PlaylistParser&) = delete;

    /// The file's next bytes. False when the rest of the file doesn't count.
    virtual bool Read(std::string_view piece) = 0;
    /// What has been read. A file that breaks off in the middle still gives the tracks before the break. To
    /// be called once.
    virtual ParsedPlaylist Finish() = 0;
};

/// M3U and M3U8 alike: real files keep to neither encoding.
std::unique_ptr<PlaylistParser> M3uParser();
std::unique_ptr<PlaylistParser> PlsParser();
std::unique_ptr<PlaylistParser> XspfParser();
std::unique_ptr<PlaylistParser> LibraryXmlParser();
/// The tracks of a cue sheet, each a part of the file that it is in. What lies between an INDEX 00 and its
/// INDEX 01, the pause before a track, belongs to none.
std::unique_ptr<PlaylistParser> CueParser();

/// By the ending of `name`.
std::unique_ptr<PlaylistParser> ParserFor(std::string_view name);

/// Entries up to the bounds above.
class EntryCollector {
  public:
    void Add(PlaylistEntry entry);
    bool IsFull() const { return entries_.size() >= kMostTracks || bytes_ >= kMostTrackBytes; }
    std::size_t Size() const { return entries_.size(); }
    std::vector<PlaylistEntry> Take();

  private:
    std::vector<PlaylistEntry> entries_;
    std::size_t bytes_ = 0;
};

/// The entry for a location in a playlist: a path, or a URL where it begins like one. `form` is
/// what a location without a scheme is. Empty where it can't be a track, as a path that is too long for the
/// system can't.
std::optional<PlaylistEntry> EntryAt(std::string_view location, PlaylistEntry::Form form);

/// True for a location on the network.
bool IsNetworkAddress(std::string_view location);

/// True for a name with that ending, which is lower case.
bool HasEnding(std::string_view name, std::string_view ending);

/// True for a path whose name ends like a playlist's.
bool IsPlaylistName(std::string_view path);

/// The next line of `rest`, ended by CR, LF, CR LF or the end, and `rest` moved past it.
std::string_view TakeLine(std::string_view& rest);

}  // namespace sorakaze::player
