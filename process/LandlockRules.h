// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Landlock: the rights to files, and to nothing else, that a command has, whatever it runs as. Built by the
// application before the fork, put in force by the command's first process.
#pragma once

#include <filesystem>
#include <vector>

#include "base/FileDescriptor.h"

namespace sorakaze::process {

enum class Access {
    Read,         ///< read and execute, all below
    ReadDevice,   ///< read
    WriteDevice,  ///< read and write
    WriteFile,    ///< read and write, an ordinary file
    Write         ///< read, write, make and remove ordinary files and folders; nothing below is executed
};

struct PathRule {
    std::filesystem::path path;
    Access access;
};

/// The version of Landlock's interface that the kernel has, 0 for none.
int LandlockVersion();

/// A ruleset that allows `paths` and refuses every other file, the network and signals to the outside as far
/// as `version` knows these. Paths that don't exist are left out. Throws std::system_error.
FileDescriptor MakeLandlockRules(int version, const std::vector<PathRule>& paths);

/// Adds a rule to a ruleset of that version, for the file or folder of `descriptor`.
/// Async-signal-safe; false with errno.
bool AllowPath(int ruleset, int version, int descriptor, Access access);

/// Puts the ruleset in force for the calling thread and all it starts. Async-signal-safe; false with errno.
bool EnforceLandlock(int ruleset);

}  // namespace sorakaze::process
