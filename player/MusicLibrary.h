// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The user's music as playlists of numbered tracks: `Library`, which is every sound file below the music
// roots, the same to be shuffled, then every playlist found there. It tells what there is and where a track's
// file lies; it reads no tags and plays nothing.
//
// A playlist that is edited is read again on the next call of any method. New, moved and removed files are
// noticed within about a second of the calls that are made meanwhile; without calls the disk isn't read. A
// music folder that goes as a whole (a disk is unmounted, a network is down) counts as it was for a quarter
// of an hour.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "player/TrackList.h"

namespace sorakaze::player {

/// Called from any thread.
class MusicLibrary {
  public:
    /// The library of an application: the Music folder beside it, and the user's own music folder.
    /// For `ended` see the constructor.
    static std::unique_ptr<MusicLibrary> OfApplication(const std::filesystem::path& appFolder,
                                                       std::stop_token ended = {});

    using Clock = std::chrono::steady_clock;

    enum class Watching {
        OnThread,  ///< A thread of the library's own scans, so that a slow disk delays no caller but the
                   ///< first.
        InCall,    ///< Each call scans first when a second has gone by.
    };

    /// Roots may be missing, equal or nested. `now` is the clock for InCall. Once a stop is asked of `ended`,
    /// on any thread, every call returns at once with what is known by then.
    explicit MusicLibrary(std::vector<std::filesystem::path> roots, Watching watching = Watching::OnThread,
                          std::function<Clock::time_point()> now = Clock::now, std::stop_token ended = {});
    ~MusicLibrary();

    /// `Library`, `Library (shuffled)`, then the others by name. Distinct; no name holds ", ", a tab or a
    /// line break.
    std::vector<std::string> Names();

    bool Has(const std::string& playlist);

    /// 0 for an unknown playlist. Tracks whose files are missing count.
    int Count(const std::string& playlist);

    /// The track with the 1-based `number` as listed; empty outside the playlist.
    std::optional<Track> Find(const std::string& playlist, int number);

    /// All tracks of the playlist as they are now; empty for an unknown one.
    TrackList Open(const std::string& playlist);

    struct MissingEntry {
        int number = 0;       ///< of the track, 1-based
        std::string written;  ///< as the playlist has it; a title where it names no file
        std::string why;      ///< a clause for the user
    };
    struct Missing {
        int count = 0;
        int checked = 0;                    ///< tracks that were looked for, from the first on
        std::vector<MissingEntry> entries;  ///< the first hundred
        std::size_t addresses = 0;          ///< on the network, which are no tracks
        bool isCut = false;                 ///< the playlist's file is longer than is read
    };
    /// The tracks of the playlist that have no file. Looks at the disk for each entry, as many as there is
    /// time for.
    Missing FindMissing(const std::string& playlist, std::chrono::milliseconds most);

    /// How to look into files, for entries that name none. Before other calls.
    void UseFacts(FactsOf factsOf);

    /// The music folder that the file is in; empty where it is in none.
    std::filesystem::path RootOf(const std::filesystem::path& file) const;

    /// Whether the file would be in a folder of music that is away as a whole at the moment. Looks at the
    /// disk.
    bool IsFolderMissing(const std::filesystem::path& file) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::player
