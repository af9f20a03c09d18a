// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <filesystem>

namespace sorakaze::process {

/// Removes a folder with all below it, as a command may have left it: at any depth, without rights, with any
/// names. Follows no link and needs no more descriptors for a deep tree than for a flat one. True when it is
/// gone; at `until` the rest is left. Nothing else may change the folder meanwhile.
bool RemoveTree(const std::filesystem::path& folder,
                std::chrono::steady_clock::time_point until = std::chrono::steady_clock::time_point::max());

}  // namespace sorakaze::process
