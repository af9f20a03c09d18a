// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <charconv>
#include <string>
#include <vector>

#include "base/Ascii.h"
#include "player/ForeignText.h"
#include "player/Lines.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

constexpr std::string_view kBlanks = " \t";
/// A CD has 99 tracks.
constexpr std::size_t kMostCueTracks = 999;
constexpr std::int32_t kFramesPerSecond = 75;

/// The first word of `text`, and `text` without it.
std::string_view TakeWord(std::string_view& text) {
    text = ascii::Trimmed(text, kBlanks);
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text = ascii::Trimmed(text.substr(word.size()), kBlanks);
    return word;
}

/// What is in quotes, or else all.
std::string_view Unquoted(std::string_view text) {
    const auto first = text.find('"'), last = text.rfind('"');
    return first == 0 && last > 0 ? text.substr(1, last - 1) : text;
}

/// The name of `"name" WAVE`.
std::string_view FileName(std::string_view text) {
    if (text.starts_with('"')) return Unquoted(text);
    return ascii::Trimmed(text.substr(0, text.find_last_of(kBlanks)), kBlanks);
}

std::optional<int> TakeNumber(std::string_view& text, int most) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number < 0 || number > most) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

/// "mm:ss:ff".
std::optional<std::int32_t> TimeOf(std::string_view text) {
    constexpr int kMostMinutes = 99'999;
    const auto minutes = TakeNumber(text, kMostMinutes);
    if (!minutes || !text.starts_with(':')) return std::nullopt;
    text.remove_prefix(1);
    const auto seconds = TakeNumber(text, 59);
    if (!seconds || !text.starts_with(':')) return std::nullopt;
    text.remove_prefix(1);
    const auto frames = TakeNumber(text, kFramesPerSecond - 1);
    if (!frames || !text.empty()) return std::nullopt;
    return (*minutes * 60 + *seconds) * kFramesPerSecond + *frames;
}

class Parser final : public PlaylistParser {
  public:
    bool Read(std::string_view piece) override {
        lines_.Read(piece);
        return tracks_.size() < kMostCueTracks;
    }

    ParsedPlaylist Finish() override {
        lines_.Finish();
        EntryCollector entries;
        for (std::size_t i = 0; i < tracks_.size(); ++i) {
            const Track& track = tracks_[i];
            if (!track.begin) continue;
            auto entry = EntryAt(track.file, PlaylistEntry::Form::Path);
            if (!entry) continue;
            entry->part = {*track.begin, EndOf(i)};
            if (entry->part.end < 0) continue;
            entry->words = TextOf(track).Packed();
            entries.Add(std::move(*entry));
        }
        return {entries.Take(), false, {}};
    }

  private:
    struct Track {
        int number = 0;
        std::string file;       ///< that it begins in
        std::string pauseFile;  ///< that the pause before it begins in
        std::optional<std::int32_t> pause, begin;
        std::string title, performer;
    };

    /// Where the next track of the same file, or the pause before it, begins; 0 for a file's last one.
    /// Negative where the sheet contradicts itself.
    std::int32_t EndOf(std::size_t index) const {
        const Track& track = tracks_[index];
        for (std::size_t i = index + 1; i < tracks_.size(); ++i) {
            const Track& next = tracks_[i];
            const bool hasPause = next.pause && next.pauseFile == track.file;
            if (!hasPause && (!next.begin || next.file != track.file)) continue;
            const std::int32_t end = hasPause ? *next.pause : *next.begin;
            return end > *track.begin ? end : -1;
        }
        return 0;
    }

    TrackText TextOf(const Track& track) const {
        TrackText text;
        text.title = CleanLine(track.title);
        if (text.title.empty()) text.title = "Track " + std::to_string(track.number);
        text.artist = CleanLine(track.performer.empty() ? performer_ : track.performer);
        text.album = CleanLine(title_);
        return text;
    }

    void TakeLine(std::string_view line) {
        const std::string command = ascii::Lowered(TakeWord(line));
        if (command == "file") {
            file_ = FileName(line);
        } else if (command == "track") {
            BeginTrack(line);
        } else if (command == "title") {
            (tracks_.empty() ? title_ : tracks_.back().title) = Unquoted(line);
        } else if (command == "performer") {
            (tracks_.empty() ? performer_ : tracks_.back().performer) = Unquoted(line);
        } else if (command == "index" && !tracks_.empty()) {
            TakeIndex(line);
        }
    }

    void BeginTrack(std::string_view line) {
        if (tracks_.size() == kMostCueTracks) return;
        std::string_view number = TakeWord(line);
        isAudio_ = line.empty() || ascii::Lowered(line) == "audio";
        tracks_.push_back({TakeNumber(number, 99).value_or(0), {}, {}, {}, {}, {}, {}});
    }

    void TakeIndex(std::string_view line) {
        std::string_view number = TakeWord(line);
        const auto index = TakeNumber(number, 99);
        const auto time = TimeOf(line);
        if (!time || !index || !isAudio_) return;
        Track& track = tracks_.back();
        if (*index == 0) {
            track.pause = time;
            track.pauseFile = file_;
        } else if (*index == 1) {
            track.begin = time;
            track.file = file_;
        }
    }

    std::string title_, performer_, file_;
    std::vector<Track> tracks_;
    bool isAudio_ = true;
    Lines lines_{kLongestPath, [this](std::string_view line) { TakeLine(line); }};
};

}  // namespace

std::unique_ptr<PlaylistParser> CueParser() {
    return std::make_unique<Parser>();
}

}  // namespace sorakaze::player
