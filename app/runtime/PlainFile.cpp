// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/PlainFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sorakaze {

FileHandle OpenPlainFile(const std::filesystem::path& path, int flags, const char* mode) {
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) return nullptr;
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return nullptr;
    }
    FileHandle file(fdopen(descriptor, mode));
    if (!file) close(descriptor);
    return file;
}

FileHandle CreatePlainFile(const std::filesystem::path& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode)))
        unlink(path.c_str());
    return OpenPlainFile(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, "wb");
}

}  // namespace sorakaze
