// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

#include "process/ConfinedProcess.h"

namespace sorakaze::process {

/// Makes the files that say how names are spoken readable, and tells the command where they are. A link
/// counts only if it leads to a text file, so that a station from elsewhere opens nothing else.
void OfferPronunciations(Confinement& confinement, const std::filesystem::path& resources);

}  // namespace sorakaze::process
