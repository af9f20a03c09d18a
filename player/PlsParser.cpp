// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <charconv>
#include <map>
#include <string>

#include "base/Ascii.h"
#include "player/ForeignText.h"
#include "player/Lines.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

constexpr std::string_view kBlanks = " \t";

/// The number after `prefix` in a key such as "file12", which is lower case. Empty for another key.
std::optional<int> NumberOf(std::string_view key, std::string_view prefix) {
    if (!key.starts_with(prefix)) return std::nullopt;
    key.remove_prefix(prefix.size());
    int number = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), number);
    if (error != std::errc{} || end != key.data() + key.size() || number < 0) return std::nullopt;
    return number;
}

class Parser final : public PlaylistParser {
  public:
    bool Read(std::string_view piece) override {
        lines_.Read(piece);
        return !IsFull();
    }

    ParsedPlaylist Finish() override {
        lines_.Finish();
        EntryCollector entries;
        std::size_t addresses = 0;
        for (auto& [number, item] : items_) {
            auto entry = EntryAt(item.file, PlaylistEntry::Form::Path);
            if (!entry) {
                addresses += IsNetworkAddress(item.file) ? 1 : 0;
                continue;
            }
            entry->words = SplitArtistTitle(CleanLine(item.title)).Packed();
            item = {};
            entries.Add(std::move(*entry));
        }
        return {entries.Take(), false, {}, false, addresses, IsFull()};
    }

  private:
    struct Item {
        std::string file;
        std::string title;
    };

    bool IsFull() const { return items_.size() >= kMostTracks || bytes_ >= kMostTrackBytes; }

    void TakeLine(std::string_view line) {
        const auto equals = line.find('=');
        if (equals == std::string_view::npos || IsFull()) return;
        const std::string key = ascii::Lowered(ascii::Trimmed(line.substr(0, equals), kBlanks));
        const std::string_view value = ascii::Trimmed(line.substr(equals + 1), kBlanks);
        bytes_ += value.size();
        if (const auto number = NumberOf(key, "file")) items_[*number].file = value;
        if (const auto number = NumberOf(key, "title")) items_[*number].title = value;
    }

    /// The numbers alone give the order: files with gaps or in any order are common.
    std::map<int, Item> items_;
    std::size_t bytes_ = 0;
    Lines lines_{kLongestText, [this](std::string_view line) { TakeLine(line); }};
};

}  // namespace

std::unique_ptr<PlaylistParser> PlsParser() {
    return std::make_unique<Parser>();
}

}  // namespace sorakaze::player
