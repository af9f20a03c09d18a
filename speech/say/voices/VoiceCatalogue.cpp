// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/VoiceCatalogue.h"

#include <algorithm>
#include <utility>

#include "speech/say/VoiceNames.h"

namespace sorakaze::speech {
namespace {

void AddNew(std::vector<VoiceCandidate>& candidates, std::vector<VoiceCandidate> more) {
    for (VoiceCandidate& one : more) {
        const bool known = std::ranges::any_of(candidates, [&](const VoiceCandidate& other) {
            return FoldName(other.name) == FoldName(one.name) && other.engine == one.engine;
        });
        if (!known) candidates.push_back(std::move(one));
    }
}

}  // namespace

void VoiceCatalogue::Add(std::unique_ptr<VoiceSource> source) {
    sources_.push_back(std::move(source));
}

VoiceChoice VoiceCatalogue::Choose(const std::string& name) const {
    VoiceChoice choice{name, {}};
    for (const auto& source : sources_) {
        choice.candidates = source->Named(name);
        if (!choice.candidates.empty()) break;
    }
    if (choice.candidates.empty()) return choice;
    const std::string language = choice.candidates.front().language;
    for (const auto& source : sources_) AddNew(choice.candidates, source->ForLanguage(language));
    return choice;
}

std::string MainLanguage(const std::string& language) {
    return language.substr(0, language.find_first_of("-_"));
}

}  // namespace sorakaze::speech
