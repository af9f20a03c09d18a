// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The tracks of a playlist at one moment: it stays as it was, whatever becomes of the playlist. A value; any
// thread.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "player/Catalogue.h"
#include "player/EntrySearch.h"

namespace sorakaze::player {

/// A track of a playlist. Its file may be gone.
struct Track {
    std::filesystem::path path;
    TrackText text{};       ///< what the playlist itself says of it
    FilePart part{};        ///< of the file, where it is a cue sheet's track
    std::string missing{};  ///< why a playlist's entry has no file, as a clause for the user
};

class TrackList {
  public:
    enum class Order {
        Listed,
        Shuffled,  ///< to be played in an order of each show's own; here they are as listed
    };

    /// Every sound file.
    TrackList(std::shared_ptr<const Catalogue> catalogue, Order order);
    /// The entries of a playlist file, or of a list of a library XML. `contents` may be null.
    TrackList(std::shared_ptr<const Catalogue> catalogue,
              std::shared_ptr<const PlaylistFiles::Contents> contents, const Playlist& playlist,
              FactsOf factsOf);

    std::size_t Count() const;
    /// The track with an index below Count(). For an entry it looks at the disk.
    Track At(std::size_t index) const;
    /// What a playlist has for the file of the entry with an index below Count(); its title where it names no
    /// file. Empty for what is no entry.
    std::string WrittenAt(std::size_t index) const;
    /// Entries on the network, which are no tracks.
    std::size_t Addresses() const { return contents_ ? contents_->addresses : 0; }
    /// Whether the playlist's file is longer than is read.
    bool IsCut() const { return contents_ && contents_->isCut; }
    /// False for the files of the music folders, which are there.
    bool MayMissFiles() const { return contents_ != nullptr; }
    Order GetOrder() const { return order_; }

  private:
    /// An entry, or one of the tracks of the cue sheet that it names.
    struct Place {
        std::size_t entry;
        const Catalogue::LibraryTrack* ofCueSheet;
    };
    void ReplaceCueSheets();
    const PlaylistEntry& EntryAt(std::size_t index) const;

    std::shared_ptr<const Catalogue> catalogue_;
    std::shared_ptr<const PlaylistFiles::Contents> contents_;
    std::vector<Place> places_;                   ///< empty where no entry names a cue sheet
    const ParsedPlaylist::List* list_ = nullptr;  ///< of a library XML
    bool isAllFiles_ = false;
    Order order_ = Order::Listed;
    bool isInLibraryXml_ = false;
    FactsOf factsOf_;
};

}  // namespace sorakaze::player
