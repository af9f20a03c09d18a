// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TrackList.h"

#include <utility>

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
}

std::size_t TrackList::Count() const {
    if (isAllFiles_) return catalogue_->TrackCount();
    if (isInLibraryXml_) return list_ != nullptr ? list_->tracks.size() : 0;
    return contents_ ? contents_->tracks.size() : 0;
}

const PlaylistEntry& TrackList::EntryAt(std::size_t index) const {
    return contents_->tracks[isInLibraryXml_ ? list_->tracks[index] : index];
}

Track TrackList::At(std::size_t index) const {
    if (isAllFiles_) {
        auto [path, ofCueSheet] = catalogue_->TrackAt(index);
        if (!ofCueSheet) return {std::move(path)};
        return {std::move(path), TrackText::Unpacked(ofCueSheet->words), ofCueSheet->part};
    }
    const PlaylistEntry& entry = EntryAt(index);
    const SearchedFiles files{[this]() -> const FileIndex& { return catalogue_->Index(); },
                              [this](std::size_t file) { return catalogue_->SoundPath(file); }, factsOf_};
    FoundFile found = SearchEntry(entry, contents_->folder, files);
    return {std::move(found.path), TrackText::Unpacked(entry.words), {}, std::move(found.missing)};
}

}  // namespace sorakaze::player
