// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/runtime/Shell.h"
#include "show/mainWindow.h"

namespace sorakaze {

/// Speaks a text with the system's voice: renders it to a temporary file, plays that to its end and deletes
/// it. Returns when it has been heard, or after a message.
void SayLine(mainWindow& window, Shell& shell, const String& voice, const String& text);

/// Has the window's viewer send a text to the voice service, whose answer speaks it. Returns at once.
/// Raises NilObjectException where the page can't be written.
void SayjLine(mainWindow& window, const String& text);

}  // namespace sorakaze
