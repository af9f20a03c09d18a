// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Keeps a catalogue of the music roots current. On a thread, which it owns: the thread scans when commanded,
// at most once a second and never for more than a twentieth of the time (a network disk can take seconds for
// a scan), and touches nothing but the catalogue. Or without one, in the calls themselves.
#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include "player/Catalogue.h"
#include "player/MusicLibrary.h"

namespace sorakaze::player {

class LibraryWatcher {
  public:
    /// When a stop of `ended` is requested, nothing is scanned any more and nobody waits. It must be
    /// requested before this is destroyed.
    LibraryWatcher(std::vector<std::filesystem::path> roots, PlaylistFiles& files,
                   MusicLibrary::Watching watching, std::function<MusicLibrary::Clock::time_point()> now,
                   std::stop_token ended);
    ~LibraryWatcher();
    LibraryWatcher(const LibraryWatcher&) = delete;
    LibraryWatcher& operator=(const LibraryWatcher&) = delete;

    /// The latest catalogue. Waits for the first scan; later, after a time without calls, for a moment at
    /// most. Empty if the stop came before the first scan was done.
    std::shared_ptr<const Catalogue> Current();

  private:
    using Clock = MusicLibrary::Clock;

    std::shared_ptr<const Catalogue> CurrentFromThread();
    /// The present catalogue: `before` itself if nothing has changed or a stop is requested.
    std::shared_ptr<const Catalogue> Scanned(const std::shared_ptr<const Catalogue>& before);
    std::shared_ptr<const Catalogue> Empty();
    void Run();

    const std::vector<std::filesystem::path> roots_;
    PlaylistFiles& files_;
    const MusicLibrary::Watching watching_;
    const std::function<Clock::time_point()> now_;
    const std::stop_token ended_;
    MissingFolders away_;  ///< the scanning thread's

    std::mutex mutex_;  ///< guards what follows; callers and the thread
    std::condition_variable_any wake_;
    std::condition_variable_any done_;
    std::shared_ptr<const Catalogue> catalogue_;
    bool wanted_ = true;
    std::uint64_t scans_ = 0;
    Clock::time_point lastScan_;                       ///< when the latest scan ended
    Clock::duration pause_ = Clock::duration::zero();  ///< from there to the next

    std::jthread thread_;  ///< last: it stops before anything else goes
};

}  // namespace sorakaze::player
