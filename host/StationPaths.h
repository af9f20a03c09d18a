// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Where a station's parts are: a folder that holds Sorakaze.app, the programs, the sounds and the music.
#pragma once

#include <filesystem>
#include <string>

namespace sorakaze {

/// The station that the running program is installed in. A path of no meaning for a program outside of any.
std::filesystem::path StationOfThisProgram();

/// A program of the station, such as "sorakaze-viewer".
std::filesystem::path ProgramOfStation(const std::filesystem::path& station, const std::string& name);

/// The folder of the application's resources.
std::filesystem::path ResourcesOfStation(const std::filesystem::path& station);

}  // namespace sorakaze
