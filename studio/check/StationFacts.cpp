// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/StationFacts.h"

#include "base/Utf8.h"
#include "host/StationPaths.h"
#include "speech/say/VoiceNames.h"

namespace sorakaze::studio {
namespace {

/// No character takes longer to speak, in seconds, and no sentence's pauses.
constexpr double kLongestCharacter = 0.5;
constexpr double kLongestPauses = 1;

}  // namespace

StationFacts::StationFacts(const std::filesystem::path& station, Speaking speaking)
    : deployment_(ReadDeployment(ResourcesOfStation(station) / "deployment.json")),
      speaking_(speaking),
      sounds_(station),
      speech_(station, deployment_) {}

std::optional<double> StationFacts::SpeechSeconds(const std::string& speaker, const std::string& text,
                                                  double enough) {
    const auto characters = static_cast<double>(utf8::CountCharacters(text));
    if (speaking_ == Speaking::Skipped || characters * kLongestCharacter + kLongestPauses <= enough)
        return {};
    return speech_.Measure(speaker, text, [this](const auto& file) { return sounds_.LengthOf(file); });
}

bool StationFacts::IsVoice(const std::string& name) {
    return speech::FindFirstName(speech::FoldName(name)).has_value();
}

bool StationFacts::LooksUpArtists() const {
    return !deployment_.searchHost.empty() || !deployment_.encyclopaediaEnglish.empty() ||
           !deployment_.encyclopaediaJapanese.empty();
}

}  // namespace sorakaze::studio
