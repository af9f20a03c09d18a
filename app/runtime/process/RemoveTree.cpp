// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/process/RemoveTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string>

namespace sorakaze::process {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

Folder OpenFolder(int parent, const char* name) {
    const int descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    Folder folder(::fdopendir(descriptor));
    if (!folder) ::close(descriptor);
    return folder;
}

bool IsDots(const char* name) {
    return name[0] == '.' && (!name[1] || (name[1] == '.' && !name[2]));
}

/// What is no folder is removed; a folder is made one that can be entered, read and moved.
bool RemoveOrOpenUp(int parent, const char* name) {
    if (::unlinkat(parent, name, 0) == 0) return true;
    struct stat status {};
    if (::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode))
        ::fchmodat(parent, name, S_IRWXU, 0);
    return false;
}

/// Empties a tree from its top: what is in a folder of the top goes up to the top, so nothing is ever deep.
class Flattener {
  public:
    explicit Flattener(const Folder& top) : top_(top.get()) {}

    /// False when a pass has removed and moved nothing.
    bool Pass() {
        bool changed = false;
        ::rewinddir(top_);
        while (const dirent* entry = ::readdir(top_)) {
            if (IsDots(entry->d_name)) continue;
            changed |= RemoveOrOpenUp(Top(), entry->d_name) || Dissolve(entry->d_name);
        }
        return changed;
    }

  private:
    int Top() const { return ::dirfd(top_); }

    bool Dissolve(const char* name) {
        {
            const Folder folder = OpenFolder(Top(), name);
            while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr)
                if (!IsDots(entry->d_name) && !RemoveOrOpenUp(::dirfd(folder.get()), entry->d_name))
                    ::renameat(::dirfd(folder.get()), entry->d_name, Top(), FreeName().c_str());
        }
        return ::unlinkat(Top(), name, AT_REMOVEDIR) == 0;
    }

    std::string FreeName() {
        struct stat status {};
        std::string name;
        do name = "removed-" + std::to_string(++moved_);
        while (::fstatat(Top(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0);
        return name;
    }

    DIR* const top_;
    unsigned long moved_ = 0;
};

}  // namespace

bool RemoveTree(const std::filesystem::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
        (status.st_mode & S_IRWXU) != S_IRWXU)
        ::chmod(path.c_str(), S_IRWXU);
    if (const Folder top = OpenFolder(AT_FDCWD, path.c_str())) {
        Flattener flattener(top);
        while (flattener.Pass()) {
        }
    }
    return ::rmdir(path.c_str()) == 0;
}

}  // namespace sorakaze::process
