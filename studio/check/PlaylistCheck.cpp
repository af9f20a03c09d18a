// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/PlaylistCheck.h"

#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include "app/runtime/String.h"
#include "base/NearestWord.h"
#include "base/RegularFile.h"
#include "base/unicode/Conversion.h"
#include "player/EntrySearch.h"
#include "player/FolderTree.h"
#include "player/PlaylistFiles.h"
#include "player/UserMusicFolder.h"
#include "program/check/PlacedLine.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

namespace fs = std::filesystem;
using check::Quoted;
using check::Severity;

constexpr std::size_t kLargestPlaylist = std::size_t{256} << 20;
/// Files looked at when a playlist is looked for by its name.
constexpr int kMostFiles = 1'000'000;
/// Missing tracks told of one by one.
constexpr std::size_t kMostMissing = 100;
/// Of a list of hundreds of thousands the first are looked for.
constexpr std::chrono::seconds kLongestSearch{5};

FileReport NoList(const std::string& name, std::string why) {
    FileReport report{name, {}, {}};
    report.findings.push_back({0, {}, Severity::Error, "unreadable", std::move(why), {}});
    return report;
}

/// The playlist files below the folder, by name.
void Collect(const fs::path& folder, std::vector<fs::path>& lists) {
    std::error_code error;
    int seen = 0;
    constexpr auto kOptions = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator entry(folder, kOptions, error), end;
         !error && entry != end && ++seen < kMostFiles; entry.increment(error)) {
        if (player::IsPlaylistName(entry->path().filename().string())) lists.push_back(entry->path());
    }
}

fs::path FindList(const fs::path& station, const std::string& word) {
    std::error_code error;
    if (word.find('/') != std::string::npos || player::IsPlaylistName(word) || fs::exists(word, error))
        return word;
    std::vector<fs::path> lists;
    if (!station.empty()) Collect(station / "Music", lists);
    Collect(player::UserMusicFolder(), lists);
    std::ranges::sort(lists);
    std::vector<std::string> names;
    for (const fs::path& list : lists) names.push_back(list.stem().string());
    const auto same =
        std::ranges::find_if(names, [&](const std::string& name) { return String(name) == String(word); });
    if (same != names.end()) return lists[static_cast<std::size_t>(same - names.begin())];
    const std::vector<std::string_view> views(names.begin(), names.end());
    const auto nearest = FindNearestWord(word, views, 3);
    throw StudioError(kWrongCall, "There is no playlist file named " + Quoted(word) +
                                      (nearest ? check::DidYouMean(nearest->word) : "."));
}

std::string ReadList(const fs::path& path) {
    const FileHandle file = OpenRegularFile(path, O_RDONLY, "rb");
    std::string bytes;
    char piece[1 << 16];
    for (std::size_t got = 1; file && got > 0 && bytes.size() < kLargestPlaylist;) {
        got = std::fread(piece, 1, sizeof piece, file.get());
        bytes.append(piece, got);
    }
    return bytes;
}

std::string AsUtf8(const std::string& bytes) {
    const bool little = bytes.starts_with("\xFF\xFE");
    if (!little && !bytes.starts_with("\xFE\xFF")) return bytes;
    return unicode::ToUtf8(std::string_view(bytes).substr(2),
                           little ? unicode::Encoding::Utf16LittleEndian : unicode::Encoding::Utf16BigEndian);
}

/// Where entries stand in the playlist's text, which has them mostly in their order.
class EntryPlaces {
  public:
    explicit EntryPlaces(std::string_view text) : text_(text) {}

    /// The line, from 1, and the entry's place in it.
    std::pair<std::size_t, check::Span> Find(const std::string& location) {
        if (location.empty()) return {line_, {}};
        std::string written = location;
        std::size_t at = text_.find(written, from_);
        if (at == std::string_view::npos && location.find('&') != std::string::npos) {
            written = ReplaceAll(location, "&", "&amp;").Bytes();
            at = text_.find(written, from_);
        }
        if (at == std::string_view::npos) return {line_, {}};
        for (std::size_t end = text_.find('\n', lineBegin_); end < at; end = text_.find('\n', lineBegin_)) {
            ++line_;
            lineBegin_ = end + 1;
        }
        from_ = at + written.size();
        return {line_, {at - lineBegin_, from_ - lineBegin_}};
    }

  private:
    const std::string_view text_;
    std::size_t from_ = 0;
    std::size_t line_ = 1;
    std::size_t lineBegin_ = 0;
};

/// The sound files of the music folders, listed at the first question.
class MusicFiles {
  public:
    explicit MusicFiles(const fs::path& station) : station_(station) {}

    player::SearchedFiles AsSearched() {
        return {[this]() -> const player::FileIndex& { return Index(); },
                [this](std::size_t file) { return paths_[file]; },
                {}};
    }

  private:
    const player::FileIndex& Index() {
        if (index_) return *index_;
        std::vector<fs::path> roots;
        if (!station_.empty()) roots.push_back(station_ / "Music");
        if (const fs::path own = player::UserMusicFolder(); !own.empty()) roots.push_back(own);
        player::MissingFolders away;
        const auto tree = player::FolderTree::Scan(roots, nullptr, away, {});
        tree->ForEachSound(
            [&](const auto& folder, const std::string& name) { paths_.push_back(folder.path + "/" + name); });
        return index_.emplace(paths_.size(), [this](std::size_t file) { return paths_[file]; });
    }

    const fs::path station_;
    std::vector<std::string> paths_;
    std::optional<player::FileIndex> index_;
};

}  // namespace

namespace {

bool NamesAnyFile(const fs::path& cueSheet, MusicFiles& music) {
    const auto tracks =
        player::ParsePlaylist(cueSheet.filename().string(), AsUtf8(ReadList(cueSheet))).tracks;
    return std::ranges::any_of(tracks, [&](const auto& track) {
        return player::SearchEntry(track, cueSheet.parent_path(), music.AsSearched()).missing.empty();
    });
}

std::string WrittenOf(const player::PlaylistEntry& entry) {
    const bool isTitle = entry.form == player::PlaylistEntry::Form::Nowhere;
    return isTitle ? player::TrackText::Unpacked(entry.words).title : entry.location;
}

/// Of an entry without a place that names alone don't decide: the player also looks at tags and lengths.
bool IsUncertain(const player::PlaylistEntry& entry, MusicFiles& music) {
    if (entry.form != player::PlaylistEntry::Form::Nowhere) return false;
    const auto words = player::TrackText::Unpacked(entry.words);
    return !music.AsSearched().index().ByTitle(words.title, words.artist).empty();
}

void TellOfWhatIsLeftOut(const player::ParsedPlaylist& list, FileReport& report) {
    const auto warn = [&](const char* code, std::string message) {
        report.findings.push_back({0, {}, Severity::Warning, code, std::move(message), {}});
    };
    if (list.addresses > 0)
        warn("network-address", std::to_string(list.addresses) +
                                    (list.addresses == 1 ? " address" : " addresses") +
                                    " on the network left out: only files are played");
    if (list.isCut)
        warn("too-long", "only the first " + std::to_string(list.tracks.size()) + " entries are read");
}

}  // namespace

FileReport CheckPlaylist(const fs::path& station, const std::string& word) {
    const fs::path path = FindList(station, word);
    std::error_code error;
    if (!fs::exists(path, error)) throw StudioError(kWrongCall, "There is no playlist " + Quoted(word) + ".");
    if (!fs::is_regular_file(path, error)) return NoList(path.string(), "this is no file");
    const std::string text = AsUtf8(ReadList(path));
    const auto parsed = player::ParsePlaylist(path.filename().string(), text);
    FileReport report{path.string(), {}, {}};
    TellOfWhatIsLeftOut(parsed, report);
    if (parsed.tracks.empty()) {
        auto none = NoList(path.string(), "no tracks are in this playlist");
        std::ranges::move(report.findings, std::back_inserter(none.findings));
        return none;
    }
    EntryPlaces places(text);
    MusicFiles music(station);
    const fs::path folder = fs::absolute(path).parent_path();
    const auto end = std::chrono::steady_clock::now() + kLongestSearch;
    std::size_t missing = 0;
    std::size_t looked = 0;
    for (const auto& entry : parsed.tracks) {
        if (std::chrono::steady_clock::now() > end) break;
        ++looked;
        if (IsUncertain(entry, music)) continue;
        auto found = player::SearchEntry(entry, folder, music.AsSearched());
        if (found.missing.empty() && player::HasEnding(found.path.string(), ".cue") &&
            !NamesAnyFile(found.path, music))
            found.missing = "none of the files that this cue sheet names is there";
        if (found.missing.empty() || ++missing > kMostMissing) continue;
        const auto [line, span] = places.Find(WrittenOf(entry));
        report.findings.push_back({line,
                                   span,
                                   Severity::Error,
                                   "missing-track",
                                   Quoted(found.path.string()) + " is missing: " + found.missing,
                                   {}});
    }
    if (missing > kMostMissing)
        report.findings.push_back({0,
                                   {},
                                   Severity::Error,
                                   "missing-track",
                                   std::to_string(missing) + " of the " + std::to_string(looked) +
                                       " files that were looked for are missing",
                                   {}});
    for (const auto line : check::SplitLines(text)) report.lines.emplace_back(line);
    return report;
}

}  // namespace sorakaze::studio
