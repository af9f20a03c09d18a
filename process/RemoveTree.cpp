// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/RemoveTree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "process/FolderListing.h"

namespace sorakaze::process {
namespace {

using Clock = std::chrono::steady_clock;

/// Empties a tree from its leaves up, one folder open at a time.
class Emptier {
  public:
    Emptier(Folder top, Clock::time_point until) : here_(std::move(top)), until_(until) {}

    /// Leaves the rest where something can't be removed.
    void Run() {
        while (EmptyHere() && Leave()) {
        }
    }

  private:
    int Here() const { return ::dirfd(here_.get()); }

    /// Goes down to a folder that holds no other, removing what is on the way.
    bool EmptyHere() {
        ::rewinddir(here_.get());
        while (const dirent* entry = ::readdir(here_.get())) {
            if (Clock::now() > until_) return false;
            if (IsDots(entry->d_name) || ::unlinkat(Here(), entry->d_name, 0) == 0 ||
                ::unlinkat(Here(), entry->d_name, AT_REMOVEDIR) == 0)
                continue;
            if (!Enter(entry->d_name)) return false;
        }
        return true;
    }

    bool Enter(std::string name) {
        struct stat status {};
        if (::fstatat(Here(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISDIR(status.st_mode))
            return false;
        [[maybe_unused]] const int opened = ::fchmodat(Here(), name.c_str(), S_IRWXU, 0);
        here_ = OpenFolder(Here(), name.c_str());
        path_.push_back(std::move(name));
        return here_ != nullptr;
    }

    /// Removes the folder that is empty now. False at the top, and where that can't be done.
    bool Leave() {
        if (path_.empty()) return false;
        here_ = OpenFolder(Here(), "..");
        if (!here_ || ::unlinkat(Here(), path_.back().c_str(), AT_REMOVEDIR) != 0) return false;
        path_.pop_back();
        return true;
    }

    Folder here_;
    const Clock::time_point until_;
    std::vector<std::string> path_;  ///< to it, from the top
};

}  // namespace

bool RemoveTree(const std::filesystem::path& path, Clock::time_point until) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
        (status.st_mode & S_IRWXU) != S_IRWXU)
        ::chmod(path.c_str(), S_IRWXU);
    if (Folder top = OpenFolder(AT_FDCWD, path.c_str())) Emptier(std::move(top), until).Run();
    return ::rmdir(path.c_str()) == 0;
}

}  // namespace sorakaze::process
