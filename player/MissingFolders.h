// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <string>
#include <unordered_map>

namespace sorakaze::player {

/// The music folders that are missing as a whole, and since when: an unmounted disk or a network that is down
/// usually comes back. For a while a show goes on with what they held. Used by one thread at a time.
class MissingFolders {
  public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::minutes kGracePeriod{15};

    /// A scan begins at that time.
    void Begin(Clock::time_point now) { now_ = now; }

    /// For a missing folder: whether what it held still counts.
    bool IsExpectedBack(const std::string& path) {
        return now_ - since_.try_emplace(path, now_).first->second < kGracePeriod;
    }
    /// The folder exists.
    void SetPresent(const std::string& path) { since_.erase(path); }

  private:
    Clock::time_point now_;
    std::unordered_map<std::string, Clock::time_point> since_;
};

}  // namespace sorakaze::player
