// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "show/ShowObserver.h"

namespace sorakaze {
class mainWindow;
namespace player {
class LocalPlayer;
}
}  // namespace sorakaze

namespace sorakaze::studio {

/// Notes how far a show has got, and passes its events on to other observers.
class ShowProgress : public ShowObserver {
  public:
    std::vector<ShowObserver*> observers;

    void OnShowEvent(const ShowEvent& event) override;

    /// In ticks of the show; 0 before the first track.
    std::int32_t LastTrackStart() const { return lastTrackStart_; }
    bool AnythingHeard() const { return anythingHeard_; }
    /// The part of the show that is over, from 0 to about 1; empty if neither its mode nor the limit gives it
    /// a length. With the baton.
    std::optional<double> Done(const mainWindow& window, player::LocalPlayer& player,
                               std::optional<double> limitSeconds) const;

  private:
    std::int32_t lastTrackStart_ = 0;
    std::int32_t tracksStarted_ = 0;
    bool anythingHeard_ = false;
};

}  // namespace sorakaze::studio
