// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The playlist files as they stand right now: parsed when first asked for, and again when a file has changed
// since.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "player/FileStamp.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

/// Called from any thread.
class PlaylistFiles {
  public:
    struct Contents {
        FileStamp stamp;
        bool settled = false;
        std::filesystem::path folder;
        bool isLibrary = false;  ///< of a library XML: `lists` are the playlists, not the tracks as a whole
        std::vector<PlaylistEntry> tracks;
        std::vector<LibraryXml::List> lists;
    };

    /// The file's contents. A file that vanished or can't be read just now gives what it held last, or null:
    /// whoever saves a playlist may take it away for a moment, and a show must not end over that.
    std::shared_ptr<const Contents> Get(const std::string& path);

    /// Forgets the files that aren't among `paths`.
    void KeepOnly(const std::unordered_set<std::string>& paths);

  private:
    std::shared_ptr<const Contents> Cached(const std::string& path);
    void Store(const std::string& path, std::shared_ptr<const Contents> contents);

    std::mutex mutex_;  ///< guards cache_; never held over a file operation
    std::unordered_map<std::string, std::shared_ptr<const Contents>> cache_;
};

/// Parses `bytes` by the ending of `name`.
PlaylistFiles::Contents ParsePlaylist(const std::string& name, std::string_view bytes);

}  // namespace sorakaze::player
