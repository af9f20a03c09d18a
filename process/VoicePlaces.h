// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Where voices of the user's own are: folders named Voices, which hold a folder for each voice.
#pragma once

#include <filesystem>
#include <vector>

namespace sorakaze::process {

/// The variable by which commands are told the folders, joined by colons: in their confinement they know
/// neither the user's home nor the environment.
inline constexpr const char* kVoicesVariable = "SORAKAZE_VOICES";

/// The folders that exist: beside the application whose Resources are given, in them, and under the data
/// folders that the environment names. A place that comes earlier is preferred.
std::vector<std::filesystem::path> VoicePlaces(const std::filesystem::path& resources);

/// Those that the variable names; nothing if it isn't set. Only absolute paths count.
std::vector<std::filesystem::path> VoicePlacesOfCommand();

}  // namespace sorakaze::process
