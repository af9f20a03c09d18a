// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::viewer {

/// Names the way to the sound server in the environment by descriptors that are open from here on: another
/// user than root can't enter the folders that its socket, its cookie and its settings are in. Called as
/// root, after CleanEnvironment and before DropRoot, while there is one thread.
void KeepSoundServerReachable();

}  // namespace sorakaze::viewer
