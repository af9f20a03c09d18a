// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>

#include "app/runtime/process/Descriptor.h"

namespace sorakaze::sound {

struct RegularFile {
    process::Descriptor descriptor;
    struct stat status;
};

/// Opens a regular file that isn't empty, for reading. Anything else that a path can name (a folder, a fifo,
/// a device) is refused before a read could block on it.
std::optional<RegularFile> OpenRegularFile(const std::filesystem::path& file);

}  // namespace sorakaze::sound
