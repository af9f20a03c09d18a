// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/VoiceDescription.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "base/PrintableText.h"

namespace sorakaze::speech {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kLongestText = 300;  // bytes
constexpr std::size_t kMostNames = 20;
constexpr int kMostSpeakers = 10'000;
constexpr double kLongestPause = 5;  // seconds

constexpr std::array<std::string_view, 5> kEngines{"sherpa-onnx", "piper", "flite", "hts", "open-jtalk"};

bool ReadText(const Json& value, std::string& text) {
    if (!value.is_string()) return false;
    const auto& given = value.get_ref<const std::string&>();
    if (given.empty() || given.size() > kLongestText) return false;
    text = Printable(given);
    return true;
}

bool ReadNumber(const Json& value, double least, double most, double& number) {
    if (!value.is_number()) return false;
    const double given = value.get<double>();
    if (!(given >= least && given <= most)) return false;
    number = given;
    return true;
}

bool ReadNames(const Json& value, std::vector<std::string>& names) {
    if (value.is_string()) return ReadNames(Json::array({value}), names);
    if (!value.is_array() || value.size() > kMostNames) return false;
    std::vector<std::string> read(value.size());
    for (std::size_t i = 0; i < read.size(); ++i)
        if (!ReadText(value[i], read[i])) return false;
    names = std::move(read);
    return true;
}

bool ReadEngine(const Json& value, std::optional<EngineKind>& engine) {
    const auto* const found = std::find(kEngines.begin(), kEngines.end(), value);
    if (found == kEngines.end()) return false;
    engine = static_cast<EngineKind>(found - kEngines.begin());
    return true;
}

/// A path that stays in the folder.
bool ReadModel(const Json& value, std::string& model) {
    std::string text;
    if (!ReadText(value, text)) return false;
    const auto path = std::filesystem::path(text).lexically_normal();
    if (path.is_absolute() || !path.has_filename() || *path.begin() == "..") return false;
    model = path.string();
    return true;
}

bool ReadMember(const std::string& name, const Json& value, VoiceDescription& voice) {
    double number = 0;
    std::string text;
    if (name == "names") return ReadNames(value, voice.names);
    if (name == "engine") return ReadEngine(value, voice.engine);
    if (name == "model") return ReadModel(value, voice.model);
    if (name == "speed") return ReadNumber(value, 0.5, 2, voice.speed);
    if (name == "gain") return ReadNumber(value, -12, 12, voice.gain);
    if (name == "licence") return ReadText(value, voice.licence);
    if (name == "credit") return ReadText(value, voice.credit);
    if (name == "language") {
        if (ReadText(value, text)) voice.language = LanguageCode(text);
        return !voice.language.empty();
    }
    if (name == "speaker") {
        if (!value.is_number_integer() || !ReadNumber(value, 0, kMostSpeakers, number)) return false;
        voice.speaker = static_cast<int>(number);
        return true;
    }
    if (name == "pause") {
        if (!ReadNumber(value, 0, kLongestPause, number)) return false;
        voice.pause = std::chrono::milliseconds(std::lround(number * 1000));
        return true;
    }
    return false;
}

}  // namespace

std::string_view NameOf(EngineKind engine) {
    return kEngines[static_cast<std::size_t>(engine)];
}

VoiceDescription ReadVoiceDescription(std::string_view json, std::string& complaint) {
    complaint.clear();
    VoiceDescription voice;
    const Json whole = Json::parse(json, nullptr, false);
    if (!whole.is_object()) {
        complaint = whole.is_discarded() ? "it is no JSON" : "it is no JSON object";
        return voice;
    }
    for (const auto& [name, value] : whole.items()) {
        if (ReadMember(name, value, voice) || !complaint.empty()) continue;
        complaint = "\"" + Printable(name.substr(0, kLongestText)) + "\" is unknown or has a wrong value";
    }
    return voice;
}

std::string LanguageCode(std::string_view text) {
    std::string code;
    for (const char letter : text) {
        if (letter >= 'A' && letter <= 'Z')
            code += static_cast<char>(letter - 'A' + 'a');
        else
            code += letter == '_' ? '-' : letter;
    }
    const auto isPartOfCode = [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '-';
    };
    const auto main = code.find('-');
    const std::size_t letters = main == std::string::npos ? code.size() : main;
    const bool right = letters >= 2 && letters <= 3 && code.size() <= 20 && code.back() != '-' &&
                       std::all_of(code.begin(), code.end(), isPartOfCode);
    return right ? code : std::string();
}

}  // namespace sorakaze::speech
