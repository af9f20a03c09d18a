// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

namespace sorakaze::player {

/// Identifies a file's or a folder's content at one time, at the cost of one stat.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0;  ///< nanoseconds of the wall clock
    std::int64_t changed = 0;   ///< likewise, of the status

    bool operator==(const FileStamp&) const = default;
};

FileStamp StampOf(const struct stat& status);

/// Empty if there is nothing at `path`. Follows links.
std::optional<FileStamp> StampOf(const std::string& path);

/// False while a further change could fall into the same tick of the file system's clock and leave the stamp
/// unchanged: what was read with such a stamp must be read again.
bool IsSettled(const FileStamp& stamp);

}  // namespace sorakaze::player
