// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What is known of a track in words. Tags, playlists and file names each give some of it.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::player {

/// Every text is clean: valid UTF-8 on one line, without tabs and control characters. Unknown texts are
/// empty.
struct TrackText {
    std::string title;
    std::string artist;
    std::string album;
    std::string titleSort;
    std::string artistSort;
    std::string albumSort;

    bool operator==(const TrackText&) const = default;

    /// Takes from `other` what is unknown here. A second spelling is taken only for the same first one.
    void FillFrom(const TrackText& other);

    /// The six texts in the order above, separated by tabs.
    std::string Record() const;

    /// The record without the tabs at its end, to be kept by the hundred thousand, and what it came from.
    std::string Packed() const;
    static TrackText Unpacked(std::string_view packed);
};

/// The common way to write a track in one text, "Artist - Title". Without " - " it is all title.
TrackText SplitArtistTitle(const std::string& text);

}  // namespace sorakaze::player
