// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

#include "studio/check/FileReport.h"

namespace sorakaze::studio {

/// Which entries of a playlist have no file. `word` is a playlist file or the name of one below the station's
/// or the user's music folder. Throws StudioError if there is none.
FileReport CheckPlaylist(const std::filesystem::path& station, const std::string& word);

}  // namespace sorakaze::studio
