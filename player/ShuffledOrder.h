// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The tracks of a list in an order that is drawn once, no artist twice running where that can be avoided. The
// list stays as it was when the order was drawn. It is arranged a stretch at a time, as artists are told by
// tags, which cost time. One thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "player/TrackList.h"

namespace sorakaze::player {

class ShuffledOrder {
  public:
    /// An artist as it is spelt; empty for an unknown one.
    using ArtistOf = std::function<std::string(const Track&)>;

    /// The same seed gives the same order.
    ShuffledOrder(TrackList tracks, std::uint64_t seed, ArtistOf artistOf);

    std::size_t Count() const { return drawn_.size(); }
    /// The track at a place below Count().
    Track At(std::size_t place);

  private:
    void ArrangeNextStretch();

    TrackList tracks_;
    const ArtistOf artistOf_;
    std::vector<std::uint32_t> drawn_;     ///< indices in the order of the draw
    std::size_t taken_ = 0;                ///< of drawn_
    std::vector<std::uint32_t> heldBack_;  ///< taken, and to be put beside other artists
    std::vector<std::uint32_t> order_;     ///< as far as it is arranged
    std::string lastArtist_;
    std::unordered_map<std::uint32_t, std::string> artists_;  ///< of heldBack_
};

/// Places of `artists` in an order close to the given one, without the same artist twice running where that
/// can be avoided, also after `last`. Empty artists are all different. Where `mayLeave`, those that could
/// only follow the same artist are left out. Pure.
std::vector<std::size_t> SpreadArtists(const std::vector<std::string>& artists, std::string last,
                                       bool mayLeave);

}  // namespace sorakaze::player
