// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Where a run of the application keeps its temporary files: a folder among the system's temporary files that
// nobody else may enter, with the files in a folder inside. A lock on it tells a run that lives from one that
// is dead. Made by the runtime, on the main thread.
#pragma once

#include <filesystem>
#include <memory>

#include "base/FileDescriptor.h"

namespace sorakaze {

class RunFolder {
  public:
    /// Removes what dead runs of this user's have left, then makes a folder. Null where none can be made.
    static std::unique_ptr<RunFolder> Make();
    /// Removes the folder with all that is in it.
    ~RunFolder();
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    /// The whole of it. A host that ends at once, without its destructors, removes this.
    const std::filesystem::path& Path() const { return path_; }
    /// Mode 0700, as its parent is. Commands find folders of their own in its place.
    const std::filesystem::path& Files() const { return files_; }

  private:
    RunFolder(std::filesystem::path path, FileDescriptor lock);

    const std::filesystem::path path_;
    const std::filesystem::path files_ = path_ / "files";
    const FileDescriptor lock_;  ///< of the folder, locked for as long as it is open
};

}  // namespace sorakaze
