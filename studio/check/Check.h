// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Checks program files and playlists, prints what is wrong with them, and mends what is certain.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace sorakaze::studio {

struct CheckOptions {
    std::filesystem::path station;  ///< empty: the one that a file lies in, or that this program is in
    std::vector<std::string>
        programs;  ///< names or files; none: all of the station, unless there are playlists
    std::vector<std::string> playlists;  ///< names or files
    bool json = false;
    bool watch = false;  ///< check again whenever a file changes, until SIGINT
    bool fix = false;
    bool quick = false;  ///< sentences aren't spoken to know their length
};

/// Returns the exit status: kFailed if something has an error. Throws StudioError.
int Check(const CheckOptions& options);

}  // namespace sorakaze::studio
