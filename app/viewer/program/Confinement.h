// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace sorakaze::viewer {

/// Confines this process and all that it starts: they can read the system's public files and play sound, but
/// write nothing that lasts and reach no other process; root becomes another user. With `ports`, only these
/// can be connected to. All as far as the kernel supports it. Called after CleanEnvironment, while there is
/// one thread. Throws std::runtime_error where something that is there fails.
void Confine(const std::optional<std::vector<std::uint16_t>>& ports);

}  // namespace sorakaze::viewer
