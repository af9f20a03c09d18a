// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::player {

/// A playlist's own name made fit for a list of names joined by ", ": one clean line, every ", " without its
/// blank. Empty where nothing is left.
std::string JoinableName(std::string_view name);

/// Makes the names distinct, whatever their letter case, and keeps their order: of equal names the first
/// keeps it and the others get the next free number, "Rock", "Rock 2".
void MakeDistinct(std::vector<std::string>& names);

}  // namespace sorakaze::player
