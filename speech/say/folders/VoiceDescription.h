// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

enum class EngineKind { Sherpa, Piper, Flite, Hts, OpenJTalk };

/// As the user reads and writes it: "sherpa-onnx", "piper", "flite", "hts", "open-jtalk".
std::string_view NameOf(EngineKind engine);

/// What a voice's `voice.json` says. Each member may be missing.
struct VoiceDescription {
    std::vector<std::string> names;    ///< beside the folder's
    std::string language;              ///< a code in lower case, such as "en-us"
    std::optional<EngineKind> engine;  ///< without it, the files tell
    std::string model;                 ///< a file of the folder, as a relative path
    int speaker = 0;                   ///< of a model with several
    double speed = 1;                  ///< 0.5 to 2
    double gain = 0;                   ///< decibels, -12 to 12
    std::chrono::milliseconds pause{0};
    std::string licence;
    std::string credit;
};

/// Members that make no sense are left out; the first of them, or what makes the whole unreadable, is told in
/// `complaint` as a part of a line, which is empty otherwise. Never throws.
VoiceDescription ReadVoiceDescription(std::string_view json, std::string& complaint);

/// "en_US" as "en-us"; empty for what is no language code.
std::string LanguageCode(std::string_view text);

}  // namespace sorakaze::speech
