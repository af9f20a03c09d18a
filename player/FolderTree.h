// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The folders below the music roots: which sound files, playlists and folders each of them holds, by name
// alone. Built by a scan that reads each folder once and opens no file; a later scan reads again only the
// folders that have changed.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "player/FileStamp.h"
#include "player/MissingFolders.h"

namespace sorakaze::player {

class FolderTree {
  public:
    /// What one folder holds, each list sorted by the names' bytes. Hidden files and folders are left out.
    struct Listing {
        FileStamp stamp;
        bool settled = false;
        std::vector<std::string> sounds;
        std::vector<std::string> playlists;
        std::vector<std::string> cueSheets;
        std::vector<std::string> folders;
        std::vector<std::string> linkedFolders;
    };

    struct Folder {
        std::string path;
        std::shared_ptr<const Listing> listing;
        /// The folders in it that are part of the tree: name and index in Folders(), sorted by name.
        std::vector<std::pair<std::string, std::size_t>> children;
    };

    /// Scans the folders at and below `roots`. Each folder counts once, however many roots and links lead to
    /// it; the way without links is preferred. What can't be read is left out. `before` may be null; from it
    /// come the roots, linked folders and mounted disks that are away for the time being. Null when a stop is
    /// asked for.
    static std::shared_ptr<const FolderTree> Scan(const std::vector<std::filesystem::path>& roots,
                                                  const FolderTree* before, MissingFolders& away,
                                                  const std::stop_token& ended);

    const std::vector<Folder>& Folders() const { return folders_; }

    /// True when every folder is the same as in `other`, where this tree's scan took it from. Nothing has
    /// changed then.
    bool HasSameListings(const FolderTree& other) const;

    /// Calls `visit` for every sound file, ordered by path component by component.
    void ForEachSound(const std::function<void(const Folder&, const std::string& name)>& visit) const;

  private:
    struct Scanner;
    void VisitSounds(std::size_t folder,
                     const std::function<void(const Folder&, const std::string& name)>& visit) const;

    std::vector<Folder> folders_;
    std::vector<std::size_t> roots_;  ///< indices of the folders that no other folder has among its children
    std::unordered_map<std::string, std::size_t> byPath_;
};

/// True for a name with the ending of a sound file.
bool IsSoundName(std::string_view name);

}  // namespace sorakaze::player
