// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Prints what a station has: its programs, and its playlists with their tracks, those without a file counted.
#pragma once

#include <filesystem>

namespace sorakaze::studio {

enum class ListFormat {
    Text,  ///< for people: "  Evening (50, 3 missing)"
    Json,  ///< one object, for programs
};

/// An empty `station` means the one that this program is in. Throws StudioError.
void List(const std::filesystem::path& station, ListFormat format);

}  // namespace sorakaze::studio
