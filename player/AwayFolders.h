// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <string>
#include <unordered_map>

namespace sorakaze::player {

/// The music folders that have gone as a whole, and since when: an unmounted disk or a network that is down
/// mostly comes back. Until then a show goes on with what they held. Used by one thread at a time.
class AwayFolders {
  public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::minutes kPatience{15};

    /// A scan begins, at that time.
    void Begin(Clock::time_point now) { now_ = now; }

    /// Whether the folder, which isn't there, is still waited for.
    bool IsWaitedFor(const std::string& path) {
        return now_ - since_.try_emplace(path, now_).first->second < kPatience;
    }
    /// The folder is there.
    void IsBack(const std::string& path) { since_.erase(path); }

  private:
    Clock::time_point now_;
    std::unordered_map<std::string, Clock::time_point> since_;
};

}  // namespace sorakaze::player
