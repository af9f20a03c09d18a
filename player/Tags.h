// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

#include "player/TrackTags.h"

namespace sorakaze::sound {
class MixingEngine;
}

namespace sorakaze::player {

/// What a sound file's own tags say, whatever their format. All empty for a file without tags, or that is
/// gone. Read by a decoder's process of `engine`; blocks for that. `why` is given the reason where they can't
/// be read.
TrackTags ReadTags(sound::MixingEngine& engine, const std::filesystem::path& file,
                   std::string* why = nullptr);

}  // namespace sorakaze::player
