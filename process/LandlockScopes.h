// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Landlock's rules that are not about files: for a program that needs the network or a sound server, and is
// confined to its own processes all the same.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/FileDescriptor.h"

namespace sorakaze::process {

/// A ruleset that keeps signals and connections to abstract sockets among the processes that it is enforced
/// on (since version 6 of the interface). With `ports` these are the only TCP ports to connect to, and none
/// can be bound (since version 4). Empty where `version` knows none of what is asked. Put in force with
/// EnforceLandlock, beside a ruleset for files. Throws std::system_error.
FileDescriptor MakeLandlockScopes(int version, const std::optional<std::vector<std::uint16_t>>& ports);

}  // namespace sorakaze::process
