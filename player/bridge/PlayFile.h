// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/runtime/FolderItem.h"
#include "app/runtime/Random.h"
#include "app/runtime/Sound.h"
#include "show/ShowObserver.h"

namespace sorakaze {

/// Starts the sound file that `argument` names, relative to `appFolder`; of a folder, one of its entries by
/// draw. Returns at once, with the sound playing as `soundData`, or after a message. Raises
/// NilObjectException for an empty folder.
void PlayFile(const FolderItemRef& appFolder, const String& argument, Random& random, SoundRef& soundData,
              TellShow tell);

}  // namespace sorakaze
