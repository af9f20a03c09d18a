// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Which files the words of a check mean.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "program/check/Finding.h"

namespace sorakaze::studio {

struct ProgramFile {
    std::filesystem::path path;
    std::string name;                      ///< as it is printed
    std::vector<check::Finding> findings;  ///< of the file's name; if there are any, the file isn't read
};

/// The programs of a station: the entries of Programs as the menu has them. Those that the menu names, but no
/// show finds, have a finding. Throws StudioError where there is none.
std::vector<ProgramFile> AllPrograms(const std::filesystem::path& station);

/// Whether the word of a call is a path and no program's name.
bool IsPath(const std::string& word);
/// The program of that name, whatever its letter case if none is spelt the same, or the file of that path.
/// Throws StudioError if there is none.
ProgramFile FindProgram(const std::filesystem::path& station, const std::string& word);

/// The station that the file lies in; empty where it lies in none.
std::filesystem::path StationOf(const std::filesystem::path& file);

}  // namespace sorakaze::studio
