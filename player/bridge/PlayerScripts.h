// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The player for the user's own files as what runs the player's scripts.
#pragma once

#include "app/runtime/Scripts.h"

namespace sorakaze {

namespace player {
class LocalPlayer;
}

/// Registers `player` for the eight numbers. It outlives the table's use.
void RegisterPlayerScripts(ScriptTable& scripts, player::LocalPlayer& player);

}  // namespace sorakaze
