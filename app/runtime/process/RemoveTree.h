// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

namespace sorakaze::process {

/// Removes a folder with all below it, as a command may have left it: at any depth, without rights, with any
/// names. Follows no link, needs no memory and no descriptors that grow with the depth, and never throws.
/// True when it is gone. Nothing else may change the folder meanwhile.
bool RemoveTree(const std::filesystem::path& folder);

}  // namespace sorakaze::process
