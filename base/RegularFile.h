// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Opening regular files and nothing else that a path can name: a read of a folder, a pipe or a device could
// fail late or never end.
#pragma once

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "base/FileDescriptor.h"

namespace sorakaze {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a regular file with the flags of open(2) and the mode of fdopen(3); null where that can't be done.
FileHandle OpenRegularFile(const std::filesystem::path& path, int flags, const char* mode);

/// Creates a regular file for writing, in place of a regular file or a link that is there, which is not
/// written to: another name of it, or where the link leads, may belong to somebody else. Null where that
/// can't be done.
FileHandle CreateRegularFile(const std::filesystem::path& path);

struct RegularFile {
    FileDescriptor descriptor;
    struct stat status;
};

/// Opens a regular file that isn't empty, for reading. Anything else is refused before it is opened.
std::optional<RegularFile> OpenNonEmptyFile(const std::filesystem::path& file);

/// After OpenNonEmptyFile was empty: why, as "it is empty", for people.
std::string WhyNotOpened(const std::filesystem::path& file);

}  // namespace sorakaze
