// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/Tags.h"

#include "sound/MixingEngine.h"

namespace sorakaze::player {

TrackTags ReadTags(sound::MixingEngine& engine, const std::filesystem::path& file, std::string* why) {
    const auto answer = engine.ReadTags(file, why);
    return answer ? TagsFromAnswer(*answer) : TrackTags();
}

}  // namespace sorakaze::player
