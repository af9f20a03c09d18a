// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::viewer {

/// Sets the environment so that the sound server is reached through open descriptors: once root is dropped,
/// the folders of its socket, cookie and settings can't be entered. Called as root, after CleanEnvironment
/// and before DropRoot, while there is one thread.
void KeepSoundServerReachable();

}  // namespace sorakaze::viewer
