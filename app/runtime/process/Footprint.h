// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How much of the disk and of the memory a command takes up, measured from outside. The kernel's limits are
// each process's and each file's; these are the sums, looked at every so often while a command runs.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

namespace sorakaze::process {

/// Bytes on the disk of all below `folder`, links not followed; an entry counts for 4096 at least, so that
/// many empty files are many bytes too. Stops counting above `enough`; a folder nested deeper than 64 counts
/// for more than enough.
std::uint64_t FolderBytes(const std::filesystem::path& folder, std::uint64_t enough);

/// The names that stand in the folder itself.
std::set<std::string> NamesIn(const std::filesystem::path& folder);

/// Removes what stands in the folder and isn't among `kept`.
void RemoveOthers(const std::filesystem::path& folder, const std::set<std::string>& kept);

struct ProcessesFootprint {
    unsigned processes = 0;          ///< below the keeper
    std::uint64_t memory = 0;        ///< bytes that they have for themselves, together
    std::uint64_t removedFiles = 0;  ///< bytes on the disk of files that no folder names any more
};

/// Of all processes below `keeper`. What can't be read counts for nothing.
ProcessesFootprint MeasureProcesses(pid_t keeper);

}  // namespace sorakaze::process
