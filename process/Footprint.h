// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How much of the disk and of the memory a command takes up, measured from outside. The kernel's limits are
// each process's and each file's; these are the sums, measured regularly while a command runs.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>

namespace sorakaze::process {

/// Bytes on the disk of all below `folder`, links not followed; an entry counts for 64 KiB at least, so that
/// many empty files are many bytes too. Stops counting above `enough`; a folder nested deeper than 64 counts
/// for more than enough.
std::uint64_t FolderBytes(const std::filesystem::path& folder, std::uint64_t enough);

struct ProcessesFootprint {
    unsigned processes = 0;          ///< below the supervisor
    std::uint64_t memory = 0;        ///< private bytes of all; shared memory counts once
    std::uint64_t removedFiles = 0;  ///< bytes of deleted files that are open or mapped
};

/// Of all processes below `supervisor`. Files of `folder` that are mapped but gone count for what is mapped
/// of them, at most `largestFile` bytes each; for an empty `folder` no file counts. Of a process that can't
/// be read, all memory counts.
ProcessesFootprint MeasureProcesses(pid_t supervisor, const std::filesystem::path& folder,
                                    std::uint64_t largestFile);

}  // namespace sorakaze::process
