// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/ShowProgress.h"

#include <algorithm>

#include "app/runtime/Runtime.h"
#include "player/LocalPlayer.h"
#include "show/ShowState.h"
#include "show/mainWindow.h"

namespace sorakaze::studio {

void ShowProgress::OnShowEvent(const ShowEvent& event) {
    using Kind = ShowEvent::Kind;
    const Kind kind = event.kind;
    if (kind == Kind::Track || kind == Kind::Say || kind == Kind::Sayj || kind == Kind::Sound)
        anythingHeard_ = true;
    if (kind == Kind::Track) {
        lastTrackStart_ = event.ticks;
        ++tracksStarted_;
    }
    for (ShowObserver* observer : observers) observer->OnShowEvent(event);
}

std::optional<double> ShowProgress::Done(const mainWindow& window, player::LocalPlayer& player,
                                         std::optional<double> limitSeconds) const {
    using Unit = ShowLength::Unit;
    const double seconds = Ticks() / static_cast<double>(kTicksPerSecond);
    const ShowLength length = LengthOf(window.mode);
    const bool countsTracks = length.unit == Unit::Tracks || length.unit == Unit::WholePlaylist;
    std::optional<double> done;
    if (length.unit == Unit::Minutes && length.count > 0) done = seconds / (length.count * 60);
    const double tracks = length.unit == Unit::WholePlaylist
                              ? Val(player.CountSongs(window.playlistMenu.Text().Bytes()))
                              : length.count;
    if (countsTracks && tracks > 0) {
        const double ofTrack = std::min(Val(player.Position()) / window.songDurationSlider.Value(), 1.0);
        done = (std::max(tracksStarted_ - 1, 0) + ofTrack) / tracks;
    }
    if (limitSeconds) done = std::max(done.value_or(0), seconds / *limitSeconds);
    return done;
}

}  // namespace sorakaze::studio
