// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A command's private folder, which is empty at first and removed with it, and the one file that it makes for
// the application. Used by ConfinedProcess, one for each run.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <optional>

#include "process/ConfinedProcess.h"
#include "process/Mechanisms.h"

namespace sorakaze::process {

class Workspace {
  public:
    /// Makes the output, empty, in place of what was there. Where no file system can be mounted for the
    /// command alone it makes the folder as well. Throws std::filesystem::filesystem_error.
    Workspace(const Confinement& confinement, const Mechanisms& mechanisms);
    /// Removes the folder, and the output unless it was taken.
    ~Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    /// The folder's path as the command sees it.
    const std::filesystem::path& Folder() const { return folder_; }
    /// The folder lies on the disk, in the run's folder; else it is mounted in the command's view alone.
    bool FolderIsOnDisk() const { return onDisk_; }
    /// Empty for none.
    const std::filesystem::path& Output() const { return output_; }

    /// When no process of the command is left: keeps the output if it is an ordinary file with something in
    /// it, and nobody else's.
    void TakeOutput();

  private:
    void MakeOutput();
    void MakeFolder();

    const std::optional<uid_t> user_;
    const std::uint64_t largestOutput_;
    std::filesystem::path folder_;
    std::filesystem::path output_;
    bool onDisk_ = false;
    bool taken_ = false;
};

}  // namespace sorakaze::process
