// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <charconv>
#include <map>
#include <string>

#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

std::string_view Trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// The number behind `prefix` in a key such as "file12", which is lower case. Empty for another key.
std::optional<int> NumberOf(std::string_view key, std::string_view prefix) {
    if (!key.starts_with(prefix)) return std::nullopt;
    key.remove_prefix(prefix.size());
    int number = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), number);
    if (error != std::errc{} || end != key.data() + key.size() || number < 0) return std::nullopt;
    return number;
}

}  // namespace

std::vector<PlaylistEntry> ParsePls(std::string_view bytes) {
    struct Item {
        std::string_view file;
        std::string_view title;
    };
    // The numbers alone give the order: files with gaps or in any order are common.
    std::map<int, Item> items;
    const std::string content = WithoutByteOrderMark(bytes);
    for (std::string_view rest = content; !rest.empty() && items.size() < kMostTracks;) {
        const std::string_view line = TakeLine(rest);
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const std::string key = LowerCased(Trimmed(line.substr(0, equals)));
        const std::string_view value = Trimmed(line.substr(equals + 1));
        if (const auto number = NumberOf(key, "file")) items[*number].file = value;
        if (const auto number = NumberOf(key, "title")) items[*number].title = value;
    }
    std::vector<PlaylistEntry> entries;
    for (const auto& [number, item] : items) {
        auto entry = EntryAt(item.file, PlaylistEntry::Form::Path);
        if (!entry) continue;
        entry->text = SplitArtistTitle(CleanLine(item.title));
        entries.push_back(std::move(*entry));
    }
    return entries;
}

}  // namespace sorakaze::player
