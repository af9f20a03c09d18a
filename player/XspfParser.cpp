// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <pugixml.hpp>
#include <string>

#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

/// The name without a namespace prefix.
std::string_view LocalName(const pugi::xml_node& node) {
    const std::string_view name = node.name();
    const auto colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::string_view Trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool HasScheme(std::string_view url) {
    const auto colon = url.find(':');
    return colon != std::string_view::npos && colon >= 2 && colon < url.find('/');
}

/// A URL reference seen from `base`, by the rules for URLs but for "." and "..", which the file system knows
/// itself.
std::string Resolved(std::string_view base, std::string_view reference) {
    if (base.empty() || HasScheme(reference)) return std::string(reference);
    std::size_t root = 0;  // where the path of the base begins
    if (HasScheme(base)) {
        root = base.find(':') + 1;
        if (base.substr(root).starts_with("//")) root = std::min(base.size(), base.find('/', root + 2));
    }
    if (reference.starts_with('/')) return std::string(base.substr(0, root)) + std::string(reference);
    const auto slash = base.rfind('/');
    const std::size_t end = slash == std::string_view::npos || slash < root ? root : slash + 1;
    std::string whole(base.substr(0, end));
    if (root > 0 && end == root) whole += '/';
    return whole.append(reference);
}

std::string BaseWithin(const std::string& outer, const pugi::xml_node& node) {
    return Resolved(outer, Trimmed(node.attribute("xml:base").value()));
}

/// Empty for a track that has no location among the user's files.
std::optional<PlaylistEntry> EntryOf(const pugi::xml_node& track, const std::string& outerBase) {
    const std::string base = BaseWithin(outerBase, track);
    std::optional<PlaylistEntry> entry;
    TrackText text;
    for (const pugi::xml_node& child : track.children()) {
        const std::string_view name = LocalName(child);
        const std::string_view value = Trimmed(child.text().get());
        if (name == "title") text.title = CleanLine(value);
        if (name == "creator") text.artist = CleanLine(value);
        if (name == "album") text.album = CleanLine(value);
        if (name == "location" && !entry && !value.empty()) {
            entry = EntryAt(Resolved(BaseWithin(base, child), value), PlaylistEntry::Form::Url);
        }
    }
    if (entry) entry->text = std::move(text);
    return entry;
}

}  // namespace

std::vector<PlaylistEntry> ParseXspf(std::string_view bytes) {
    // A file that breaks off in the middle still gives the tracks before the break.
    pugi::xml_document document;
    document.load_buffer(bytes.data(), bytes.size());
    std::vector<PlaylistEntry> entries;
    for (const pugi::xml_node& playlist : document.children()) {
        if (LocalName(playlist) != "playlist") continue;
        const std::string base = BaseWithin({}, playlist);
        for (const pugi::xml_node& list : playlist.children()) {
            if (LocalName(list) != "trackList") continue;
            const std::string listBase = BaseWithin(base, list);
            for (const pugi::xml_node& track : list.children()) {
                if (LocalName(track) != "track" || entries.size() >= kMostTracks) continue;
                if (auto entry = EntryOf(track, listBase)) entries.push_back(std::move(*entry));
            }
        }
    }
    return entries;
}

}  // namespace sorakaze::player
