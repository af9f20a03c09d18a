// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The folder that holds the application, as the studio finds it.
#pragma once

#include <filesystem>
#include <string>

#include "app/runtime/Controls.h"

namespace sorakaze::studio {

/// The absolute path of the station; an empty `given` means the one that this program is in. Throws
/// StudioError where there is none.
std::filesystem::path FindStation(const std::filesystem::path& given);

/// Selects the row of that name, whatever its letter case if none is spelt the same. Throws StudioError,
/// naming the rows, if there is none; `what` is what a row is called.
void SelectRow(PopupMenu& menu, const std::string& name, const std::string& what);

}  // namespace sorakaze::studio
