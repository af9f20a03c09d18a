// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

constexpr std::string_view kTrackInfo = "#EXTINF:";

/// The text behind the first comma that no attribute's quotes hold: `123 key="a, b",Artist - Title`.
TrackText TextOfTrackInfo(std::string_view info) {
    bool quoted = false;
    for (std::size_t i = 0; i < info.size(); ++i) {
        if (info[i] == '"') quoted = !quoted;
        if (info[i] == ',' && !quoted) return SplitArtistTitle(CleanLine(info.substr(i + 1)));
    }
    return {};
}

}  // namespace

std::vector<PlaylistEntry> ParseM3u(std::string_view bytes) {
    std::vector<PlaylistEntry> entries;
    const std::string content = WithoutByteOrderMark(bytes);
    TrackText text;
    for (std::string_view rest = content; !rest.empty() && entries.size() < kMostTracks;) {
        const std::string_view line = TakeLine(rest);
        if (LowerCased(line.substr(0, kTrackInfo.size())) == LowerCased(kTrackInfo)) {
            text = TextOfTrackInfo(line.substr(kTrackInfo.size()));
        } else if (!line.empty() && !line.starts_with('#')) {
            if (auto entry = EntryAt(line, PlaylistEntry::Form::Path)) {
                entry->text = std::move(text);
                entries.push_back(std::move(*entry));
            }
            text = {};
        }
    }
    return entries;
}

}  // namespace sorakaze::player
