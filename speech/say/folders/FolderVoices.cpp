// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/FolderVoices.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include "speech/say/VoiceNames.h"
#include "speech/say/folders/PiperVoice.h"
#include "speech/say/folders/SherpaVoice.h"
#include "speech/say/folders/VoiceLanguage.h"
#include "speech/say/voices/FliteEngine.h"
#include "speech/say/voices/HtsVoice.h"
#include "speech/say/voices/OpenJTalkEngine.h"
#include "speech/say/voices/SeparateEngine.h"

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMostMemory = 1200ull << 20;  // bytes

/// The folder itself, then what is beside it.
std::vector<fs::path> PlacesOfPrograms(const VoiceFolder& voice, const std::vector<fs::path>& places) {
    std::vector<fs::path> all{voice.path};
    all.insert(all.end(), places.begin(), places.end());
    return all;
}

}  // namespace

FolderVoices::FolderVoices(std::vector<fs::path> places, fs::path scratch,
                           std::chrono::steady_clock::time_point deadline, const VoiceSource& others)
    : places_(std::move(places)), scratch_(std::move(scratch)), deadline_(deadline), others_(others) {}

std::vector<VoiceFolder> FolderVoices::All() const {
    return AllVoiceFolders(places_);
}

std::optional<VoiceFolder> FolderVoices::Find(const std::string& name) const {
    return FindVoiceFolder(places_, name);
}

std::vector<VoiceCandidate> FolderVoices::Named(const std::string& name) const {
    const auto voice = Find(name);
    if (!voice) return {};
    std::vector<VoiceCandidate> candidates = CandidatesOf(*voice);
    const auto person = FindFirstName(FoldName(name));
    if (person && MainLanguage(LanguageOfVoice(person->voice)) == MainLanguage(LanguageOf(*voice)))
        for (VoiceCandidate& one : others_.Named(name)) candidates.push_back(std::move(one));
    return candidates;
}

std::vector<VoiceCandidate> FolderVoices::ForLanguage(const std::string& language) const {
    std::vector<VoiceCandidate> candidates;
    for (const VoiceFolder& voice : All()) {
        if (MainLanguage(LanguageOf(voice)) != MainLanguage(language) || voice.models.empty()) continue;
        for (VoiceCandidate& one : CandidatesOf(voice)) candidates.push_back(std::move(one));
    }
    return candidates;
}

std::vector<VoiceCandidate> FolderVoices::CandidatesOf(const VoiceFolder& voice) const {
    std::vector<VoiceCandidate> candidates;
    for (const VoiceModel& model : voice.models) candidates.push_back(CandidateOf(voice, model));
    if (!candidates.empty()) return candidates;
    VoiceCandidate none = CandidateOf(voice, {});
    none.engine = "no engine";
    none.start = [path = voice.path](double) -> std::unique_ptr<VoiceEngine> {
        throw std::runtime_error(path.string() + " holds no model that an engine can speak with");
    };
    return {std::move(none)};
}

VoiceCandidate FolderVoices::CandidateOf(const VoiceFolder& voice, const VoiceModel& model) const {
    VoiceCandidate candidate;
    candidate.name = voice.name;
    candidate.engine = NameOf(model.engine);
    candidate.language = LanguageOf(voice);
    candidate.gain = voice.description.gain;
    candidate.pause = voice.description.pause;
    candidate.start = [this, voice, model](double speed) {
        return Start(voice, model, speed * voice.description.speed);
    };
    return candidate;
}

std::unique_ptr<VoiceEngine> FolderVoices::Start(const VoiceFolder& voice, const VoiceModel& model,
                                                 double speed) const {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline_ - std::chrono::steady_clock::now());
    if (left.count() <= 0) throw std::runtime_error("there was no time left for it");
    const auto places = PlacesOfPrograms(voice, places_);
    const int speaker = voice.description.speaker;
    switch (model.engine) {
        case EngineKind::Piper: {
            PiperProgram program = FindPiper(places);
            if (program.words.empty()) throw std::runtime_error("the program Piper isn't installed");
            return std::make_unique<PiperVoice>(std::move(program), model, speaker, speed, scratch_,
                                                deadline_);
        }
        case EngineKind::Sherpa: {
            const fs::path library = FindSherpa(places);
            if (library.empty()) throw std::runtime_error("the library of sherpa-onnx isn't installed");
            return std::make_unique<SeparateEngine>(
                [=] { return std::make_unique<SherpaVoice>(library, model, speaker, speed); },
                EngineBounds{left, left, kMostMemory});
        }
        case EngineKind::Flite:
            return std::make_unique<SeparateEngine>(
                [=] { return std::make_unique<FliteEngine>(FliteLook{model.model.string()}, speed); },
                EngineBounds{left, left, kMostMemory});
        case EngineKind::Hts:
            return std::make_unique<HtsVoice>(HtsLook{model.model}, speed, scratch_);
        case EngineKind::OpenJTalk: {
            OpenJTalkVoice own;
            own.voice = model.model;
            return std::make_unique<OpenJTalkEngine>(std::move(own), speed, scratch_);
        }
        default:
            throw std::runtime_error("this version has no engine for it");
    }
}

}  // namespace sorakaze::speech
