// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/runtime/Controls.h"
#include "app/runtime/FolderItem.h"
#include "app/runtime/Shell.h"
#include "app/runtime/Sound.h"
#include "show/ShowObserver.h"

namespace sorakaze {

/// Speaks a text with the system's voice: renders it to a temporary file, plays that as `sayData` to its end
/// and deletes it. Returns when it has been heard, or after a message.
void SayLine(Shell& shell, const String& voice, const String& text, SoundRef& sayData, TellShow tell);

/// Writes a page of the voice service to a temporary file and has the viewer load it, after an empty one.
/// Returns at once. Raises NilObjectException where the page can't be written.
void LoadVoicePage(HTMLViewer& viewer, const FolderItemRef& resourceFolder, const String& page);

}  // namespace sorakaze
