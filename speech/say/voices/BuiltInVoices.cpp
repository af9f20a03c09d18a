// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/BuiltInVoices.h"

#include <algorithm>
#include <optional>

#include "speech/japanese/Reader.h"
#include "speech/say/Engine.h"
#include "speech/say/JapaneseVoice.h"
#include "speech/say/VoiceNames.h"
#include "speech/say/voices/FliteNames.h"
#include "speech/say/voices/HtsVoice.h"
#include "speech/say/voices/OpenJTalkEngine.h"
#include "speech/say/voices/SeparateEngine.h"

namespace sorakaze::speech {
namespace {

class EspeakVoice : public VoiceEngine {
  public:
    EspeakVoice(Engine& engine, const std::string& name, double speed,
                const BuiltInVoices::Complain& complain)
        : engine_(engine), speed_(speed), complain_(complain) {
        engine_.Choose(name, speed);
    }
    void Speak(const std::string& text, const SpeechSink& sink) override {
        const Engine::Sink record = [&](std::span<const std::int16_t> samples, BlockStart start) {
            sink(engine_.SampleRate(), samples, start);
        };
        if (engine_.IsJapanese()) {
            SpeakJapanese(engine_, japanese::OpenReader(complain_), text, speed_, record);
        } else {
            engine_.Speak(text, record);
        }
    }

  private:
    Engine& engine_;
    double speed_;
    const BuiltInVoices::Complain& complain_;
};

}  // namespace

BuiltInVoices::BuiltInVoices(std::filesystem::path scratch, Complain complain)
    : scratch_(std::move(scratch)), complain_(std::move(complain)) {}

BuiltInVoices::~BuiltInVoices() = default;

Engine& BuiltInVoices::Espeak() const {
    if (!espeak_) espeak_ = std::make_unique<Engine>();
    return *espeak_;
}

std::vector<VoiceCandidate> BuiltInVoices::Named(const std::string& name) const {
    const auto person = FindFirstName(FoldName(name));
    const auto language = person ? LanguageOfVoice(person->voice) : Espeak().LanguageOf(name);
    if (!language) return {};
    // A voice that the engine lists but that isn't installed is no voice.
    if (!person) Espeak().Choose(name);
    std::vector<VoiceCandidate> candidates;
    const auto add = [&](const char* engine, auto start) {
        candidates.push_back({name, engine, *language, 0, {}, std::move(start)});
    };
    const std::string folded = FoldName(name);
    if (MainLanguage(*language) == "ja") {
        if (const auto found = FindOpenJTalk({}, folded, 1)) {
            add("Open JTalk", [this, found](double speed) {
                return std::make_unique<OpenJTalkEngine>(*found, speed, scratch_);
            });
        }
    }
    if (const auto look = FindHtsLook(folded); look && HasHts()) {
        add("HTS", [this, look](double speed) { return std::make_unique<HtsVoice>(*look, speed, scratch_); });
    }
    if (const auto look = FindFliteLook(folded)) {
        add("Flite", [look](double speed) {
            return std::make_unique<SeparateEngine>(
                [look, speed] { return std::make_unique<FliteEngine>(*look, speed); }, EngineBounds());
        });
    }
    add("espeak-ng", [this, name](double speed) {
        return std::make_unique<EspeakVoice>(Espeak(), name, speed, complain_);
    });
    return candidates;
}

std::vector<VoiceCandidate> BuiltInVoices::ForLanguage(const std::string& language) const {
    if (language.empty()) return {};
    for (const std::string_view name : FirstNames()) {
        const auto person = FindFirstName(name);
        if (MainLanguage(LanguageOfVoice(person->voice)) == MainLanguage(language))
            return Named(std::string(name));
    }
    return Named(MainLanguage(language));
}

}  // namespace sorakaze::speech
