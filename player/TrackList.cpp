// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TrackList.h"

#include <utility>

#include "player/EntryFile.h"

namespace sorakaze::player {

namespace {

/// The list of a library XML that `playlist` names. Null when the file no longer holds it.
const ParsedPlaylist::List* ListOf(const PlaylistFiles::Contents& contents, const Playlist& playlist) {
    int occurrence = playlist.occurrence;
    for (const ParsedPlaylist::List& list : contents.lists) {
        if (list.name == playlist.ownName && occurrence-- == 0) return &list;
    }
    return nullptr;
}

}  // namespace

TrackList::TrackList(std::shared_ptr<const Catalogue> catalogue, Order order)
    : catalogue_(std::move(catalogue)), isAllFiles_(true), order_(order) {}

TrackList::TrackList(std::shared_ptr<const Catalogue> catalogue,
                     std::shared_ptr<const PlaylistFiles::Contents> contents, const Playlist& playlist,
                     FactsOf factsOf)
    : catalogue_(std::move(catalogue)),
      contents_(std::move(contents)),
      isInLibraryXml_(playlist.inLibraryXml),
      factsOf_(std::move(factsOf)) {
    if (contents_ && contents_->isShuffled) order_ = Order::Shuffled;
    if (contents_ && isInLibraryXml_) list_ = ListOf(*contents_, playlist);
    if (contents_ && !isInLibraryXml_ && !contents_->cueEntries.empty()) ReplaceCueSheets();
}

void TrackList::ReplaceCueSheets() {
    auto sheet = contents_->cueEntries.begin();
    for (std::size_t i = 0; i < contents_->tracks.size() && places_.size() < kMostTracks; ++i) {
        const bool isSheet = sheet != contents_->cueEntries.end() && *sheet == i;
        if (isSheet) ++sheet;
        const auto file = isSheet ? FileOf(contents_->tracks[i], contents_->folder) : std::nullopt;
        const auto* const tracks = file ? catalogue_->TracksOfSheet(file->lexically_normal()) : nullptr;
        if (!tracks) {
            places_.push_back({i, nullptr});
            continue;
        }
        for (const auto& track : *tracks) places_.push_back({i, &track});
    }
}

std::size_t TrackList::Count() const {
    if (isAllFiles_) return catalogue_->TrackCount();
    if (isInLibraryXml_) return list_ != nullptr ? list_->tracks.size() : 0;
    if (!places_.empty()) return places_.size();
    return contents_ ? contents_->tracks.size() : 0;
}

const PlaylistEntry& TrackList::EntryAt(std::size_t index) const {
    if (!places_.empty()) return contents_->tracks[places_[index].entry];
    return contents_->tracks[isInLibraryXml_ ? list_->tracks[index] : index];
}

std::string TrackList::WrittenAt(std::size_t index) const {
    if (!contents_) return {};
    const PlaylistEntry& entry = EntryAt(index);
    return entry.form == PlaylistEntry::Form::Nowhere ? TrackText::Unpacked(entry.words).title
                                                      : entry.location;
}

Track TrackList::At(std::size_t index) const {
    if (isAllFiles_) {
        auto [path, ofCueSheet] = catalogue_->TrackAt(index);
        if (!ofCueSheet) return {std::move(path)};
        return {std::move(path), TrackText::Unpacked(ofCueSheet->words), ofCueSheet->part};
    }
    if (const auto* const track = places_.empty() ? nullptr : places_[index].ofCueSheet)
        return {track->path, TrackText::Unpacked(track->ofCueSheet->words), track->ofCueSheet->part};
    const PlaylistEntry& entry = EntryAt(index);
    const SearchedFiles files{[this]() -> const FileIndex& { return catalogue_->Index(); },
                              [this](std::size_t file) { return catalogue_->SoundPath(file); }, factsOf_};
    FoundFile found = SearchEntry(entry, contents_->folder, files);
    // One that names a file that is there has been replaced by its tracks.
    if (found.missing.empty() && HasEnding(found.path.string(), ".cue"))
        found.missing = "none of the files that this cue sheet names is there";
    return {std::move(found.path), TrackText::Unpacked(entry.words), {}, std::move(found.missing)};
}

}  // namespace sorakaze::player
