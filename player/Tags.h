// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

#include "player/TrackText.h"

namespace sorakaze::player {

/// What a sound file's own tags say, whatever their format. All empty for a file without tags, or that is
/// gone. Reads the tags alone, not the sound.
TrackText ReadTags(const std::filesystem::path& file);

/// A file's name without its ending, as a title.
std::string TitleFromName(const std::filesystem::path& file);

}  // namespace sorakaze::player
