// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/runtime/Random.h"
#include "show/mainWindow.h"

namespace sorakaze {

/// Starts the sound file that `argument` names, relative to the application's folder; of a folder, one of its
/// entries by draw. Returns at once, with the sound playing in soundData, or after a message. Raises
/// NilObjectException for an empty folder.
void PlayFile(mainWindow& window, Random& random, const String& argument);

}  // namespace sorakaze
