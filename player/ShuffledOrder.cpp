// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/ShuffledOrder.h"

#include <algorithm>
#include <list>
#include <numeric>
#include <utility>

#include "player/NameText.h"

namespace sorakaze::player {

namespace {

/// Tracks whose tags are read at a time: few before the first track, which the show waits for, and then as
/// many again as before, since a longer stretch can be arranged better. A short list is read whole.
constexpr std::size_t kFirstStretch = 16;
constexpr std::size_t kLongestStretch = 256;
constexpr std::size_t kShortList = 48;

/// "Artist feat. Guest" is the artist's.
std::string KeyOf(std::string artist) {
    for (const char* guest : {" feat", " Feat", " ft.", " Ft."}) {
        const auto at = artist.find(guest);
        if (at != std::string::npos) artist.resize(at);
    }
    return ComparableText(artist);
}

}  // namespace

std::vector<std::size_t> SpreadArtists(const std::vector<std::string>& artists, std::string last,
                                       bool mayLeave) {
    std::vector<std::size_t> order;
    std::list<std::size_t> left;
    std::unordered_map<std::string, std::size_t> counts;
    for (std::size_t i = 0; i < artists.size(); ++i) {
        left.push_back(i);
        if (!artists[i].empty()) ++counts[artists[i]];
    }
    // An artist with more than half of what is left has to come now, or two will meet later.
    const auto mustCome = [&](std::size_t i) {
        return !artists[i].empty() && artists[i] != last && 2 * counts[artists[i]] > left.size();
    };
    const auto mayCome = [&](std::size_t i) { return artists[i].empty() || artists[i] != last; };
    while (!left.empty()) {
        const bool isAnyMost = std::any_of(counts.begin(), counts.end(), [&](const auto& count) {
            return count.first != last && 2 * count.second > left.size();
        });
        auto next = isAnyMost ? std::find_if(left.begin(), left.end(), mustCome)
                              : std::find_if(left.begin(), left.end(), mayCome);
        if (next == left.end()) {
            if (mayLeave) break;
            next = left.begin();
        }
        order.push_back(*next);
        last = artists[*next];
        if (!last.empty()) --counts[last];
        left.erase(next);
    }
    return order;
}

ShuffledOrder::ShuffledOrder(TrackList tracks, std::uint64_t seed, ArtistOf artistOf)
    : tracks_(std::move(tracks)), artistOf_(std::move(artistOf)), drawn_(tracks_.Count()) {
    std::iota(drawn_.begin(), drawn_.end(), 0u);
    // Not std::shuffle, which is another one in each library.
    std::mt19937_64 random(seed);
    for (std::size_t i = drawn_.size(); i > 1; --i) std::swap(drawn_[i - 1], drawn_[random() % i]);
}

Track ShuffledOrder::At(std::size_t place) {
    while (order_.size() <= place) ArrangeNextStretch();
    return tracks_.At(order_[place]);
}

void ShuffledOrder::ArrangeNextStretch() {
    std::vector<std::uint32_t> stretch = std::exchange(heldBack_, {});
    const bool isShort = drawn_.size() <= kShortList;
    const std::size_t stretchSize =
        isShort ? drawn_.size() : std::clamp(taken_, kFirstStretch, kLongestStretch);
    const std::size_t end = std::min(taken_ + stretchSize, drawn_.size());
    for (; taken_ < end; ++taken_) {
        stretch.push_back(drawn_[taken_]);
        artists_[drawn_[taken_]] = KeyOf(artistOf_(tracks_.At(drawn_[taken_])));
    }
    std::vector<std::string> artists;
    for (const std::uint32_t track : stretch) artists.push_back(artists_[track]);
    const bool isLast = taken_ == drawn_.size();
    const auto places = SpreadArtists(artists, lastArtist_, !isLast);
    std::vector<bool> isPlaced(stretch.size());
    for (const std::size_t place : places) {
        order_.push_back(stretch[place]);
        isPlaced[place] = true;
        artists_.erase(stretch[place]);
    }
    if (!places.empty()) lastArtist_ = artists[places.back()];
    for (std::size_t i = 0; i < stretch.size(); ++i)
        if (!isPlaced[i]) heldBack_.push_back(stretch[i]);
}

}  // namespace sorakaze::player
