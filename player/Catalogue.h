// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the music roots hold at one moment: the sound files in order and the playlists by name. A value, built
// once from a scan and then only read.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "player/FileIndex.h"
#include "player/FolderTree.h"
#include "player/PlaylistFiles.h"

namespace sorakaze::player {

inline constexpr const char* kLibraryName = "Library";
/// The same in an order of each show's own.
inline constexpr const char* kShuffledName = "Library (shuffled)";

/// A playlist of the user's: a file, or one of the lists in a library XML.
struct Playlist {
    std::string name;  ///< distinct and fit to be joined
    std::string file;
    bool inLibraryXml = false;
    std::string ownName;  ///< in the library XML; more than one list can have it
    int occurrence = 0;   ///< among the lists with that name, from 0
};

class Catalogue {
  public:
    /// Reads the library XML files among the tree's playlists for their names, and the cue sheets, and no
    /// other file.
    Catalogue(std::shared_ptr<const FolderTree> tree, PlaylistFiles& files);

    const FolderTree& Tree() const { return *tree_; }

    std::string SoundPath(std::size_t index) const;

    /// A track of `Library`: a sound file, or a part of one by the cue sheet beside it.
    struct LibraryTrack {
        std::string path;
        const PlaylistEntry* ofCueSheet = nullptr;
    };
    std::size_t TrackCount() const { return tracks_.empty() ? sounds_.size() : tracks_.size(); }
    LibraryTrack TrackAt(std::size_t index) const;
    /// The tracks of the cue sheet of that path; null where it is none of the music folders', or makes none.
    const std::vector<LibraryTrack>* TracksOfSheet(const std::string& path) const;

    /// The sound files by name. Built at the first call; any thread.
    const FileIndex& Index() const;

    /// All playlists but `Library`, by name.
    const std::vector<Playlist>& Playlists() const { return playlists_; }
    /// By name, exactly or else without regard to letter case. Null for an unknown one and for `Library`.
    const Playlist* Find(const std::string& name) const;

    /// True while the library XML files hold the names that were read from them.
    bool IsCurrent(PlaylistFiles& files) const;

  private:
    struct Sound {
        const std::string* folder;  ///< into tree_
        const std::string* name;    ///< likewise
    };
    struct LibraryFile {
        std::string path;
        std::shared_ptr<const PlaylistFiles::Contents> contents;
        bool isRead;  ///< false for one too many
    };

    struct TrackPlace {
        std::uint32_t sound;  ///< index in sounds_
        const PlaylistEntry* ofCueSheet;
    };
    using CueTracks = std::unordered_map<std::string, std::vector<const PlaylistEntry*>>;  ///< by path

    void ReadCueSheet(const FolderTree::Folder& folder, const std::string& name, PlaylistFiles& files,
                      CueTracks& tracks);
    void PlaceTracks(const CueTracks& tracks);
    void AddPlaylistFile(const std::string& folder, const std::string& name, PlaylistFiles& files);
    void NamePlaylists();

    std::shared_ptr<const FolderTree> tree_;
    std::vector<Sound> sounds_;
    std::vector<TrackPlace> tracks_;  ///< empty where each sound is one
    std::vector<Playlist> playlists_;
    std::vector<LibraryFile> libraries_;
    std::vector<std::shared_ptr<const PlaylistFiles::Contents>> cueSheets_;
    std::unordered_map<std::string, std::vector<LibraryTrack>> tracksOfSheets_;  ///< by the sheet's path
    std::size_t cueBytes_ = 0;                                                   ///< likewise
    std::size_t libraryBytes_ = 0;                                               ///< of memory that they take
    std::unordered_map<std::string, std::size_t> byName_;
    std::unordered_map<std::string, std::size_t> byFoldedName_;
    mutable std::once_flag indexed_;
    mutable std::unique_ptr<const FileIndex> index_;
};

}  // namespace sorakaze::player
