// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/Tags.h"

#include "player/ForeignText.h"
#include "sound/MixingEngine.h"

namespace sorakaze::player {

TrackTags ReadTags(sound::MixingEngine& engine, const std::filesystem::path& file) {
    const auto answer = engine.ReadTags(file);
    return answer ? TagsFromAnswer(*answer) : TrackTags();
}

std::string TitleFromName(const std::filesystem::path& file) {
    const std::string ending = file.extension().string();
    constexpr std::size_t kLongestEnding = 6;
    // "Vol. 2" has no ending.
    const bool isEnding = ending.size() <= kLongestEnding && ending.find(' ') == std::string::npos;
    return CleanLine((isEnding ? file.stem() : file.filename()).string());
}

}  // namespace sorakaze::player
