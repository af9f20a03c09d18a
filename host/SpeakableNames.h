// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Names that a shell would read as something else: "Ke$ha" would be said as "ke".
#pragma once

#include <filesystem>
#include <string>

#include "player/TrackText.h"

namespace sorakaze {

/// The texts with those names that hold "$" or a backquote and are listed in the station's Pronunciations.txt
/// in their listed spelling. Everything else stays. Reads the files anew, so that a change counts at once.
player::TrackText SpeakableNames(player::TrackText text, const std::filesystem::path& resources);

}  // namespace sorakaze
