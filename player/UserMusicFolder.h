// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string_view>

namespace sorakaze::player {

/// The folder that the desktop's settings name for the user's music, else ~/Music. Empty where the user has
/// set it to the home folder itself, the way to say that there is none. It need not exist.
std::filesystem::path UserMusicFolder();

/// The same from the text of user-dirs.dirs. Pure.
std::filesystem::path MusicFolderFrom(std::string_view userDirs, const std::filesystem::path& home);

}  // namespace sorakaze::player
