// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Opening the files behind the streams.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>

namespace sorakaze {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a plain file with the flags of open(2) and the mode of fdopen(3); null where that can't be done. A
/// folder, a pipe or a device is no plain file: reading one could fail late or never end.
FileHandle OpenPlainFile(const std::filesystem::path& path, int flags, const char* mode);

/// Creates a plain file for writing, in place of a plain file or a link that is there, which is not written
/// to: another name of it, or where the link leads, may belong to somebody else. Null where that can't be
/// done.
FileHandle CreatePlainFile(const std::filesystem::path& path);

}  // namespace sorakaze
