// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Looks whether files can be played, one at a time, on a thread of its own that sleeps when nothing is
// wanted: a file's first frames are decoded and dropped.
#pragma once

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace sorakaze::sound {
class MixingEngine;
}

namespace sorakaze::player {

class TrackCheck {
  public:
    struct Unplayable {
        std::filesystem::path file;
        std::string why;  ///< for people
    };

    /// `engine` outlives the object.
    explicit TrackCheck(sound::MixingEngine& engine) : engine_(engine) {}

    // All on any thread:

    /// Returns at once.
    void Want(const std::filesystem::path& file);
    /// What was found since the last call.
    std::vector<Unplayable> Take();
    /// Called when there is something to take, on this object's thread; it must not call this object. After
    /// this returns, the former `tell` isn't called any more.
    void OnFound(std::function<void()> tell);

  private:
    void Work(const std::stop_token& stop);

    sound::MixingEngine& engine_;
    std::mutex mutex_;  // guards the next three
    std::condition_variable_any wanted_;
    std::deque<std::filesystem::path> files_;  ///< the next one first
    std::vector<Unplayable> found_;
    std::mutex tellMutex_;  // guards tell_, also while it is called
    std::function<void()> tell_;
    std::jthread thread_;  ///< last, so that it ends before all else
};

}  // namespace sorakaze::player
