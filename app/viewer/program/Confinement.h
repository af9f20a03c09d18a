// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

namespace sorakaze::viewer {

/// From here on this process and all that it starts, root's too, can read the system's files and the page,
/// play sound, and write nothing that lasts; as far as the kernel knows how. Called after NarrowSurroundings,
/// while there is one thread.
void ConfineToFilesOf(const std::filesystem::path& page);

}  // namespace sorakaze::viewer
