// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "speech/say/folders/VoiceFolder.h"

namespace sorakaze::speech {

/// The voice that has that name as its folder's, or else among those of its voice.json, in the first of
/// `places` that has one.
std::optional<VoiceFolder> FindVoiceFolder(const std::vector<std::filesystem::path>& places,
                                           const std::string& name);

/// All voices in the places. Those of the same name but the first are left out.
std::vector<VoiceFolder> AllVoiceFolders(const std::vector<std::filesystem::path>& places);

/// The language of a folder's voice: "en" if nothing tells.
std::string LanguageOf(const VoiceFolder& voice);

/// The language of a voice by its name, for those who don't speak with it: that of a folder in `places`, of a
/// first name, or the name if it is a language code; otherwise "en".
std::string LanguageOfVoiceNamed(const std::string& name, const std::vector<std::filesystem::path>& places);

}  // namespace sorakaze::speech
