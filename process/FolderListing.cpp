// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/FolderListing.h"

#include <fcntl.h>
#include <unistd.h>

namespace sorakaze::process {

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

}  // namespace sorakaze::process
