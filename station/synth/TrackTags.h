// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

#include "station/synth/Catalogue.h"

namespace sorakaze::station {

/// Writes a track's tags and its cover into a finished sound file, in the form of its format. Throws
/// std::runtime_error.
void WriteTags(const std::filesystem::path& file, const Track& track, const EncodedPicture& cover);

}  // namespace sorakaze::station
