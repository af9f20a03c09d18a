// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A folder that holds a voice of the user's own: which files it has, and which engines can speak with them.
// Reads the folder and starts nothing.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "speech/say/folders/VoiceDescription.h"

namespace sorakaze::speech {

enum class NeuralKind { Vits, Matcha, Kokoro, Kitten };

/// What one engine needs to speak as the voice. Paths are empty for what isn't there.
struct VoiceModel {
    EngineKind engine = EngineKind::Sherpa;
    std::filesystem::path model;

    NeuralKind kind = NeuralKind::Vits;  ///< this and the next ones are for sherpa-onnx
    std::filesystem::path tokens;
    std::filesystem::path lexicons;  ///< several are joined by commas
    std::filesystem::path speakers;  ///< Kokoro's and Kitten's voices.bin
    std::filesystem::path vocoder;   ///< Matcha's
    std::filesystem::path espeakData;

    std::filesystem::path config;  ///< for Piper
};

struct VoiceFolder {
    std::string name;  ///< the folder's
    std::filesystem::path path;
    VoiceDescription description;    ///< completed by what the files tell of language and licence
    std::vector<VoiceModel> models;  ///< best first; empty: the folder has no model
    std::string complaint;           ///< of voice.json, as one line; empty if there is none
};

/// Nothing if it is no folder that can be read, or one that holds programs and libraries instead of a voice.
std::optional<VoiceFolder> ReadVoiceFolder(const std::filesystem::path& folder);

/// The value of a note at the end of a model file in ONNX's format; empty without one.
std::string NoteOfModel(std::string_view end, std::string_view key);

/// The language in a name such as "en_US-amy-medium" or "kokoro-en-v0_19"; empty for none.
std::string LanguageInName(std::string_view name);

}  // namespace sorakaze::speech
