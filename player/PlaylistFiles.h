// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The playlist files as they are now: parsed when first asked for, and again when a file has changed
// since. A thread, which this owns, reads what callers ask for; it is commanded by them, and touches nothing
// but the cache.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <set>
#include <stop_token>
#include <string>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "player/FileStamp.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

/// Called from any thread.
class PlaylistFiles {
  public:
    struct Contents : ParsedPlaylist {
        FileStamp stamp;
        bool settled = false;
        std::filesystem::path folder;
        std::size_t bytes = 0;                  ///< of memory, about
        std::vector<std::uint32_t> cueEntries;  ///< indices of the tracks that name a cue sheet
    };

    /// Once a stop is asked of `ended`, nothing is read any more and nobody waits. It must be asked before
    /// this goes.
    explicit PlaylistFiles(std::stop_token ended);
    PlaylistFiles(const PlaylistFiles&) = delete;
    PlaylistFiles& operator=(const PlaylistFiles&) = delete;

    /// The file's contents. A file that vanished or can't be read just now gives what it held last, or null:
    /// whoever saves a playlist may take it away for a moment, and a show must not end over that. So does one
    /// that takes long to read, until it has been read.
    std::shared_ptr<const Contents> Get(const std::string& path);

    /// The same, read on the calling thread however long it takes.
    std::shared_ptr<const Contents> GetHere(const std::string& path);

    /// Forgets the files that aren't among `paths`.
    void KeepOnly(const std::unordered_set<std::string>& paths);

  private:
    using Cache = std::unordered_map<std::string, std::shared_ptr<const Contents>>;

    std::shared_ptr<const Contents> Cached(const std::string& path);
    void Store(const std::string& path, std::shared_ptr<const Contents> contents);
    void MakeRoom(std::size_t bytes);
    void Run();

    std::mutex mutex_;  ///< guards what follows; never held over a file operation
    std::condition_variable_any changed_;
    Cache cache_;
    std::set<std::string> wanted_;  ///< to be read by the thread, or being read

    const std::stop_token ended_;
    std::jthread thread_;  ///< last: it stops before anything else goes
};

/// Parses `bytes` by the ending of `name`.
ParsedPlaylist ParsePlaylist(const std::string& name, std::string_view bytes);

}  // namespace sorakaze::player
