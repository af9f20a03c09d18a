// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Where the files Pronunciations.txt are, which say how names are spoken.
#pragma once

#include <filesystem>
#include <vector>

namespace sorakaze::process {

/// The variable by which commands are told the files, joined by colons, since the station can be out of their
/// sight.
inline constexpr const char* kPronunciationsVariable = "SORAKAZE_PRONUNCIATIONS";

/// The files that exist, preferred first: the station's own, beside the application whose Resources are
/// given, and the one in the Resources.
std::vector<std::filesystem::path> PronunciationFiles(const std::filesystem::path& resources);

/// Those that the variable names, or, where it isn't set, those of the Resources.
std::vector<std::filesystem::path> PronunciationFilesOfCommand(const std::filesystem::path& resources);

}  // namespace sorakaze::process
