// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Which user commands run as, and how a user namespace names the users.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace sorakaze::process {

/// The user, and the group of the same number, that commands run as where the application is root and may
/// change the user. It is the run's own: two runs of root's at once don't count each other's processes. Empty
/// where commands run as the application does.
std::optional<uid_t> CommandUser();

/// The map of a namespace within this one where everybody is who they are here. `path` names the kernel's
/// own.
std::string IdentityIdMap(const char* path);

}  // namespace sorakaze::process
