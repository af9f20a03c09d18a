// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <pugixml.hpp>
#include <string>
#include <unordered_map>

#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

using TrackIndices = std::unordered_map<long long, std::uint32_t>;

/// Calls `visit(key, value)` for each pair of a property list's dictionary.
template <typename Visit>
void ForEachPair(const pugi::xml_node& dictionary, const Visit& visit) {
    for (pugi::xml_node node = dictionary.first_child(); node; node = node.next_sibling()) {
        if (std::string_view(node.name()) != "key") continue;
        const pugi::xml_node value = node.next_sibling();
        if (!value || std::string_view(value.name()) == "key") continue;
        visit(std::string_view(node.text().get()), value);
        node = value;
    }
}

pugi::xml_node ValueOf(const pugi::xml_node& dictionary, std::string_view wanted) {
    pugi::xml_node found;
    ForEachPair(dictionary, [&](std::string_view key, const pugi::xml_node& value) {
        if (key == wanted && !found) found = value;
    });
    return found;
}

/// A field of TrackText for a key of a track, or nothing.
std::string TrackText::*FieldFor(std::string_view key) {
    if (key == "Name") return &TrackText::title;
    if (key == "Artist") return &TrackText::artist;
    if (key == "Album") return &TrackText::album;
    if (key == "Sort Name") return &TrackText::titleSort;
    if (key == "Sort Artist") return &TrackText::artistSort;
    if (key == "Sort Album") return &TrackText::albumSort;
    return nullptr;
}

void AddTrack(LibraryXml& library, TrackIndices& indices, const pugi::xml_node& dictionary) {
    std::optional<PlaylistEntry> entry;
    TrackText text;
    long long id = -1;
    ForEachPair(dictionary, [&](std::string_view key, const pugi::xml_node& value) {
        if (const auto field = FieldFor(key)) text.*field = CleanLine(value.text().get());
        if (key == "Track ID") id = value.text().as_llong(-1);
        if (key == "Location") entry = EntryAt(value.text().get(), PlaylistEntry::Form::Url);
    });
    if (!entry || id < 0 || library.tracks.size() >= kMostTracks) return;
    entry->text = std::move(text);
    if (indices.try_emplace(id, static_cast<std::uint32_t>(library.tracks.size())).second) {
        library.tracks.push_back(std::move(*entry));
    }
}

/// Empty for what no user made or sees: the library's own sections, hidden lists, folders of lists.
std::optional<LibraryXml::List> ListOf(const pugi::xml_node& dictionary, const TrackIndices& indices) {
    LibraryXml::List list;
    bool isTheUsers = true;
    ForEachPair(dictionary, [&](std::string_view key, const pugi::xml_node& value) {
        const std::string_view kind = value.name();
        if (key == "Name") list.name = CleanLine(value.text().get());
        if ((key == "Master" || key == "Folder") && kind == "true") isTheUsers = false;
        if (key == "Visible" && kind == "false") isTheUsers = false;
        if (key == "Distinguished Kind") isTheUsers = false;
        if (key != "Playlist Items") return;
        for (const pugi::xml_node& item : value.children("dict")) {
            const auto found = indices.find(ValueOf(item, "Track ID").text().as_llong(-1));
            if (found != indices.end()) list.tracks.push_back(found->second);
        }
    });
    if (!isTheUsers || list.name.empty()) return std::nullopt;
    return list;
}

}  // namespace

std::optional<LibraryXml> ParseLibraryXml(std::string_view bytes) {
    // A whole library is large: no node for what isn't needed, and none apart for the text of an element.
    constexpr unsigned kFlags = pugi::parse_escapes | pugi::parse_cdata | pugi::parse_embed_pcdata;
    pugi::xml_document document;
    document.load_buffer(bytes.data(), bytes.size(), kFlags);
    const pugi::xml_node root = document.child("plist").child("dict");
    const pugi::xml_node tracks = ValueOf(root, "Tracks");
    const pugi::xml_node playlists = ValueOf(root, "Playlists");
    if (!tracks && !playlists) return std::nullopt;
    LibraryXml library;
    TrackIndices indices;
    ForEachPair(tracks,
                [&](std::string_view, const pugi::xml_node& track) { AddTrack(library, indices, track); });
    for (const pugi::xml_node& playlist : playlists.children("dict")) {
        if (auto list = ListOf(playlist, indices)) library.lists.push_back(std::move(*list));
    }
    return library;
}

}  // namespace sorakaze::player
