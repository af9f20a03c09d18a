// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "speech/say/folders/VoiceFolder.h"

// Whatever a voice.json holds, its values are in their ranges and its model stays in the folder.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze::speech;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    std::string complaint;
    const VoiceDescription voice = ReadVoiceDescription(bytes, complaint);
    if (!(voice.speed >= 0.5 && voice.speed <= 2) || !(voice.gain >= -12 && voice.gain <= 12)) std::abort();
    if (voice.pause.count() < 0 || voice.pause.count() > 5000 || voice.speaker < 0) std::abort();
    const std::filesystem::path model = voice.model;
    if (model.is_absolute() || (!model.empty() && *model.begin() == "..")) std::abort();
    if (voice.credit.find_first_of("\t\n") != std::string::npos) std::abort();
    NoteOfModel(bytes, "voice");
    LanguageInName(bytes);
    return 0;
}
