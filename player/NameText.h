// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a file's place says of its track, for files without tags: "01 - Artist - Title.mp3",
// "Artist/Album/01 Title.flac", "artist_title_(hd).ogg". Artist and album are told only where the pattern is
// certain. Pure functions.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "player/TrackText.h"

namespace sorakaze::player {

/// The names of the files in one folder.
using NamesBeside = std::function<std::vector<std::string>()>;

/// Title, and where they are certain artist and album. The title is never empty for a file with a name.
/// `root` is the music folder that the file is in, empty outside of any: folders above it say nothing.
/// `beside` is called only where they decide whether "12 Drummers.mp3" begins with a track number.
TrackText TextFromPath(const std::filesystem::path& file, const std::filesystem::path& root,
                       const NamesBeside& beside);

/// A file's name without its ending, as one clean line.
std::string NameWithoutEnding(const std::filesystem::path& file);

/// For comparing titles and names however they are written: letters and digits alone, in one letter case.
std::string ComparableText(std::string_view text);

}  // namespace sorakaze::player
