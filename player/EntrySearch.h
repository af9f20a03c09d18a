// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The search for the file of a playlist's entry: where the entry says, else anywhere in the music folders by
// what is known of it. One candidate only: between two there is no guess.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "player/FileIndex.h"
#include "player/PlaylistParsers.h"
#include "player/TrackText.h"

namespace sorakaze::player {

/// What can be known of a sound file by opening it.
struct FileFacts {
    TrackText text;  ///< of its tags
    std::optional<double> seconds;
};
using FactsOf = std::function<FileFacts(const std::filesystem::path&)>;

struct FoundFile {
    std::filesystem::path path;  ///< the best guess where it is missing
    std::string missing;         ///< why, as a clause for the user; empty where the file is there
};

/// The music folders as the search sees them.
struct SearchedFiles {
    std::function<const FileIndex&()> index;  ///< called only where it is needed
    FileIndex::PathOf pathOf;
    FactsOf factsOf;  ///< may be empty: then files are told by their names alone
};

/// The file of an entry of a playlist in `folder`. Reads the disk; opens files only for entries that name
/// none.
FoundFile SearchEntry(const PlaylistEntry& entry, const std::filesystem::path& folder,
                      const SearchedFiles& files);

}  // namespace sorakaze::player
