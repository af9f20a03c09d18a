// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The folder that holds the application, as the studio finds it, and the music that belongs to it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "app/runtime/Controls.h"
#include "player/MusicLibrary.h"

namespace sorakaze::studio {

/// The absolute path of the station; an empty `given` means the one that this program stands in. Throws
/// StudioError where there is none.
std::filesystem::path FindStation(const std::filesystem::path& given);

/// The station's Music and the user's own music folder.
std::unique_ptr<player::MusicLibrary> OpenLibrary(const std::filesystem::path& station);

/// Selects the row of that name, whatever its letter case if none is spelt the same. Throws StudioError,
/// naming the rows, if there is none; `what` is what a row is.
void SelectRow(PopupMenu& menu, const std::string& name, const std::string& what);

}  // namespace sorakaze::studio
