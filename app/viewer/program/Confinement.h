// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace sorakaze::viewer {

/// From here on this process and all that it starts can read the system's public files, play sound, and write
/// nothing that lasts; they reach no other process; and as root they are root no more. With `ports`, these
/// are the only ones to connect to. All as far as the kernel knows how. Called after CleanEnvironment,
/// while there is one thread. Throws std::runtime_error where something that is there fails.
void Confine(const std::optional<std::vector<std::uint16_t>>& ports);

}  // namespace sorakaze::viewer
