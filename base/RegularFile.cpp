// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/RegularFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace sorakaze {

FileHandle OpenRegularFile(const std::filesystem::path& path, int flags, const char* mode) {
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

FileHandle CreateRegularFile(const std::filesystem::path& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode)))
        unlink(path.c_str());
    return OpenRegularFile(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, "wb");
}

std::optional<RegularFile> OpenNonEmptyFile(const std::filesystem::path& file) {
    // Looked at first, as opening a device can have effects; and again after the open, as the name may have
    // changed hands in between. O_NONBLOCK keeps a fifo without a writer from holding the caller.
    RegularFile opened{};
    const auto isRegular = [&] { return S_ISREG(opened.status.st_mode) && opened.status.st_size > 0; };
    if (::stat(file.c_str(), &opened.status) != 0 || !isRegular()) return std::nullopt;
    opened.descriptor = FileDescriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!opened.descriptor || ::fstat(opened.descriptor.Get(), &opened.status) != 0 || !isRegular())
        return std::nullopt;
    return opened;
}

std::string WhyNotOpened(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        return errno == ENOENT || errno == ENOTDIR ? "there is no such file"
                                                   : std::string("it can't be read: ") + std::strerror(errno);
    }
    if (S_ISDIR(status.st_mode)) return "it is a folder";
    if (!S_ISREG(status.st_mode)) return "it is no ordinary file";
    if (status.st_size == 0) return "it is empty";
    return std::string("it can't be read: ") + std::strerror(::access(file.c_str(), R_OK) == 0 ? EIO : errno);
}

}  // namespace sorakaze
