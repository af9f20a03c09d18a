// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::viewer {

/// As root: becomes one of the users that commands run under, to whom no file belongs, with the right to the
/// sound devices alone. False where the process stays what it was: it isn't root, or root of a place that
/// has no other users. Called while there is one thread. Ends the process if the application ended meanwhile.
bool DropRoot();

/// Whether this process could be root of a user namespace, which the web engine's own sandbox is made of.
bool CanMakeUserNamespaces();

}  // namespace sorakaze::viewer
