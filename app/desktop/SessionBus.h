// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::desktop {

/// Whether there is a session bus to connect to: one that the environment names, or the user's own socket in
/// the runtime directory. Asked first, because connecting without one would start a bus, with the help of the
/// window system.
bool HasSessionBus();

}  // namespace sorakaze::desktop
