// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "player/LocalPlayer.h"
#include "show/ShowObserver.h"

namespace sorakaze::studio {

/// Counts what became of a show's tracks, and what else failed.
class ShowSummary : public ShowObserver {
  public:
    void OnShowEvent(const ShowEvent& event) override;
    void OnTrack(const player::TrackEvent& event);

    /// Whether anything failed at all.
    bool HasFailures() const { return unplayable_ > 0 || otherFailures_ > 0 || !ahead_.empty(); }
    /// "Done: 1:27:03, 21 tracks, 2 could not be played: a.mp3 (it is empty), b.mp3 (there is no such file)".
    /// Names the first few.
    std::string Text() const;
    /// A line for each text and voice that must be credited: "Title, address, licence".
    const std::vector<std::string>& Credits() const { return credits_; }
    /// Why the show counts as failed, as a sentence; empty where at least half of its tracks were played.
    std::string Verdict() const;

  private:
    void AddCredit(const ShowEvent& event);
    int Tracks() const { return played_ + unplayable_; }

    std::int32_t ticks_ = 0;
    int played_ = 0;
    int unplayable_ = 0;
    int otherFailures_ = 0;
    /// Tracks that can't be played and whose turn hasn't come.
    std::set<std::pair<std::string, int>> ahead_;
    std::vector<std::string> named_;  ///< the first tracks that could not be played, and why
    std::vector<std::string> credits_;
};

}  // namespace sorakaze::studio
