// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::viewer {

/// As root: becomes one of the users that commands run as, who owns no files, with access to the sound
/// devices. False if the process isn't root, or is root in a namespace without other users. Called while
/// there is one thread. Ends the process if the application ended meanwhile.
bool DropRoot();

/// Whether this process can create user namespaces, which the web engine's own sandbox is made of.
bool CanMakeUserNamespaces();

}  // namespace sorakaze::viewer
