// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the playlist formats share: locations and lines.
#include "player/PlaylistParsers.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/Ascii.h"

namespace sorakaze::player {

namespace {

bool IsSchemeCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '-' || c == '.';
}

/// The scheme that a location begins with; empty for a path. One letter is a drive, not a scheme.
std::string_view SchemeOf(std::string_view location) {
    const auto colon = location.find(':');
    if (colon == std::string_view::npos || colon < 2) return {};
    const std::string_view scheme = location.substr(0, colon);
    if (!std::all_of(scheme.begin(), scheme.end(), IsSchemeCharacter)) return {};
    const bool isFile = ascii::Lowered(scheme) == "file" && location.substr(colon + 1).starts_with('/');
    return isFile || location.substr(colon + 1).starts_with("//") ? scheme : std::string_view{};
}

/// The path of what follows "file:": "/x", "///x", "//localhost/x". Another host's name is dropped too:
/// where its files are mounted is anyone's guess, and the search for moved files does the rest.
std::string_view PathOfFileUrl(std::string_view rest) {
    if (!rest.starts_with("//")) return rest;
    const auto slash = rest.find('/', 2);
    return slash == std::string_view::npos ? std::string_view{} : rest.substr(slash);
}

}  // namespace

std::optional<PlaylistEntry> EntryAt(std::string_view location, PlaylistEntry::Form form) {
    PlaylistEntry entry;
    entry.form = form;
    const std::string_view scheme = SchemeOf(location);
    if (!scheme.empty()) {
        if (ascii::Lowered(scheme) != "file") return std::nullopt;
        location = PathOfFileUrl(location.substr(scheme.size() + 1));
        entry.form = PlaylistEntry::Form::Url;
    }
    const bool blank = location.find_first_not_of(" \t") == std::string_view::npos;
    const std::size_t longest = entry.form == PlaylistEntry::Form::Url ? kLongestText : kLongestPath;
    if (blank || location.size() > longest || location.find('\0') != std::string_view::npos ||
        IsPlaylistName(location)) {
        return std::nullopt;
    }
    entry.location = location;
    return entry;
}

bool IsNetworkAddress(std::string_view location) {
    const std::string_view scheme = SchemeOf(location);
    return !scheme.empty() && ascii::Lowered(scheme) != "file";
}

std::unique_ptr<PlaylistParser> ParserFor(std::string_view name) {
    if (HasEnding(name, ".xml")) return LibraryXmlParser();
    if (HasEnding(name, ".xspf")) return XspfParser();
    if (HasEnding(name, ".cue")) return CueParser();
    return HasEnding(name, ".pls") ? PlsParser() : M3uParser();
}

void EntryCollector::Add(PlaylistEntry entry) {
    if (IsFull()) return;
    bytes_ += entry.location.size() + entry.words.size();
    entries_.push_back(std::move(entry));
}

std::vector<PlaylistEntry> EntryCollector::Take() {
    entries_.shrink_to_fit();
    return std::move(entries_);
}

bool HasEnding(std::string_view name, std::string_view ending) {
    return name.size() >= ending.size() && ascii::Lowered(name.substr(name.size() - ending.size())) == ending;
}

bool IsPlaylistName(std::string_view path) {
    static constexpr std::array<std::string_view, 5> kEndings = {".m3u", ".m3u8", ".pls", ".xspf", ".xml"};
    while (path.ends_with(' ') || path.ends_with('\t')) path.remove_suffix(1);
    const std::string tail = ascii::Lowered(path.substr(path.size() - std::min<std::size_t>(path.size(), 5)));
    return std::any_of(kEndings.begin(), kEndings.end(), [&](auto ending) { return tail.ends_with(ending); });
}

std::string_view TakeLine(std::string_view& rest) {
    const auto end = rest.find_first_of("\r\n");
    const std::string_view line = rest.substr(0, end);
    if (end == std::string_view::npos) {
        rest = {};
    } else {
        rest.remove_prefix(end + (rest.substr(end).starts_with("\r\n") ? 2 : 1));
    }
    return line;
}

}  // namespace sorakaze::player
