// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

#include "process/ConfinedProcess.h"

namespace sorakaze::process {

/// Makes the folders of the user's voices readable, and tells the command where they are. A voice that is a
/// link in such a folder is readable too, unless the link leads to a folder that holds the home folder or the
/// application.
void OfferVoices(Confinement& confinement, const std::filesystem::path& resources);

}  // namespace sorakaze::process
