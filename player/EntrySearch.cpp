// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/EntrySearch.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "base/RegularFile.h"
#include "player/EntryFile.h"
#include "player/NameText.h"

namespace sorakaze::player {

namespace {

/// Lengths of one track by two programs differ by less, in seconds.
constexpr double kSameLength = 2;

std::string SeveralFit(const std::vector<std::size_t>& files, const FileIndex::PathOf& pathOf) {
    return "several files could be meant, " + pathOf(files[0]) + " and " + pathOf(files[1]);
}

bool AreSame(const std::string& a, const std::string& b) {
    return ComparableText(a) == ComparableText(b);
}

/// What a file's name and its tags say of whether it is the track.
class Candidate {
  public:
    Candidate(const std::filesystem::path& file, const FactsOf& factsOf)
        : facts_(factsOf ? factsOf(file) : FileFacts{}), named_(TextFromPath(file, {}, {})) {}

    bool Fits(const TrackText& wanted, double seconds) const {
        const bool isLength = seconds > 0 && facts_.seconds;
        const bool isSameLength = isLength && std::fabs(*facts_.seconds - seconds) <= kSameLength;
        if (isLength && !isSameLength) return false;
        if (!facts_.text.title.empty())
            return AreSame(facts_.text.title, wanted.title) && IsArtist(facts_.text.artist, wanted.artist);
        const bool isByArtist = !named_.artist.empty() && AreSame(named_.artist, wanted.artist);
        return isSameLength || isByArtist || (wanted.artist.empty() && seconds <= 0);
    }

  private:
    static bool IsArtist(const std::string& tagged, const std::string& wanted) {
        return tagged.empty() || wanted.empty() || AreSame(tagged, wanted);
    }

    FileFacts facts_;
    TrackText named_;
};

FoundFile SearchByText(const PlaylistEntry& entry, const std::filesystem::path& folder,
                       const SearchedFiles& files) {
    const TrackText wanted = TrackText::Unpacked(entry.words);
    std::vector<std::size_t> fitting = files.index().ByTitle(wanted.title, wanted.artist);
    std::erase_if(fitting, [&](std::size_t file) {
        return !Candidate(files.pathOf(file), files.factsOf).Fits(wanted, entry.milliseconds / 1000.0);
    });
    if (fitting.size() == 1) return {files.pathOf(fitting[0]), {}};
    std::string name = wanted.artist + (wanted.artist.empty() ? "" : " - ") + wanted.title;
    std::replace(name.begin(), name.end(), '/', '_');
    return {folder / name, fitting.empty() ? "the playlist names no file, and none in the music folders fits"
                                           : SeveralFit(fitting, files.pathOf)};
}

}  // namespace

FoundFile SearchEntry(const PlaylistEntry& entry, const std::filesystem::path& folder,
                      const SearchedFiles& files) {
    if (entry.form == PlaylistEntry::Form::Nowhere) return SearchByText(entry, folder, files);
    if (auto file = FileOf(entry, folder)) return {*std::move(file), {}};
    const FileIndex::Match match = files.index().ByPath(Spellings(entry));
    if (match.files.size() == 1) return {files.pathOf(match.files[0]), {}};
    if (!match.files.empty()) return {GuessOf(entry, folder), SeveralFit(match.files, files.pathOf)};
    auto guess = GuessOf(entry, folder);
    std::error_code error;
    const bool isThere = std::filesystem::exists(guess, error);
    std::string why = isThere ? WhyNotOpened(guess) : "there is no such file, nor another of that name";
    return {std::move(guess), std::move(why)};
}

}  // namespace sorakaze::player
