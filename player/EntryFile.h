// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// From an entry of a playlist to the file that it means. Playlists are written by many programs on many
// systems and move about with their files, so every possible spelling of an entry is tried, the literal one
// first.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "player/PlaylistParsers.h"

namespace sorakaze::player {

/// The spellings to try, best first, at least one: unchanged, without percent-escapes, decoded to UTF-8,
/// with slashes for backslashes, without blanks around, composed and decomposed. Pure.
std::vector<std::string> Spellings(const PlaylistEntry& entry);

/// The file that `entry` of a playlist in `folder` means. An absolute place that doesn't exist here is looked
/// for below `folder` by its last components, so that a library moved as a whole is found again.
std::optional<std::filesystem::path> FileOf(const PlaylistEntry& entry, const std::filesystem::path& folder);

/// The place that the entry most likely means, where there is no file.
std::filesystem::path GuessOf(const PlaylistEntry& entry, const std::filesystem::path& folder);

/// True for a regular file or a link to one: the only kind that can be opened without waiting for anyone.
bool IsRegularFile(const std::filesystem::path& file);

}  // namespace sorakaze::player
