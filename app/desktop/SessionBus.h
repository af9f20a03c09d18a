// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::desktop {

/// Whether there is a session bus: one that the environment names, or the user's own socket in the runtime
/// directory. Connecting without one would start a bus.
bool HasSessionBus();

}  // namespace sorakaze::desktop
