// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Ascii.h"
#include "player/ForeignText.h"
#include "player/Lines.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

constexpr std::string_view kTrackInfo = "#EXTINF:";
constexpr std::string_view kShuffle = "#shuffle";

/// The text after the first comma outside an attribute's quotes: `123 key="a, b",Artist - Title`.
TrackText TextOfTrackInfo(std::string_view info) {
    bool quoted = false;
    for (std::size_t i = 0; i < info.size(); ++i) {
        if (info[i] == '"') quoted = !quoted;
        if (info[i] == ',' && !quoted) return SplitArtistTitle(CleanLine(info.substr(i + 1)));
    }
    return {};
}

class Parser final : public PlaylistParser {
  public:
    bool Read(std::string_view piece) override {
        lines_.Read(piece);
        return !entries_.IsFull();
    }

    ParsedPlaylist Finish() override {
        lines_.Finish();
        const bool isFull = entries_.IsFull();
        return {entries_.Take(), false, {}, isShuffled_, addresses_, isFull};
    }

  private:
    void TakeLine(std::string_view line) {
        if (ascii::Lowered(line.substr(0, kTrackInfo.size())) == ascii::Lowered(kTrackInfo)) {
            words_ = TextOfTrackInfo(line.substr(kTrackInfo.size())).Packed();
        } else if (ascii::Lowered(ascii::Trimmed(line, " \t")) == kShuffle) {
            isShuffled_ = true;
        } else if (!line.empty() && !line.starts_with('#')) {
            if (auto entry = EntryAt(line, PlaylistEntry::Form::Path)) {
                entry->words = words_;
                entries_.Add(std::move(*entry));
            } else if (IsNetworkAddress(line)) {
                ++addresses_;
            }
            words_.clear();
        }
    }

    EntryCollector entries_;
    bool isShuffled_ = false;
    std::size_t addresses_ = 0;
    std::string words_;  ///< for the next entry
    Lines lines_{kLongestText, [this](std::string_view line) { TakeLine(line); }};
};

}  // namespace

std::unique_ptr<PlaylistParser> M3uParser() {
    return std::make_unique<Parser>();
}

}  // namespace sorakaze::player
