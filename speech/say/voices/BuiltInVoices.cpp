// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/BuiltInVoices.h"

#include <algorithm>
#include <optional>

#include "speech/japanese/Reader.h"
#include "speech/say/Engine.h"
#include "speech/say/JapaneseVoice.h"
#include "speech/say/OpenJTalk.h"
#include "speech/say/VoiceNames.h"

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

class OpenJTalkEngine : public VoiceEngine {
  public:
    OpenJTalkEngine(OpenJTalkVoice voice, std::filesystem::path scratch)
        : voice_(std::move(voice)), scratch_(std::move(scratch)) {}
    void Speak(const std::string& text, const SpeechSink& sink) override {
        SpeakOpenJTalk(voice_, text, scratch_, [&](int rate, std::span<const std::int16_t> samples) {
            sink(rate, samples, BlockStart::WithinWord);
        });
    }

  private:
    OpenJTalkVoice voice_;
    std::filesystem::path scratch_;
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
    if (MainLanguage(*language) == "ja") {
        if (const auto found = FindOpenJTalk({}, FoldName(name), 1)) {
            candidates.push_back({name, "Open JTalk", *language, 0, {}, [this, found](double speed) {
                                      OpenJTalkVoice voice = *found;
                                      voice.speed = speed;
                                      return std::make_unique<OpenJTalkEngine>(voice, scratch_);
                                  }});
        }
    }
    candidates.push_back({name, "espeak-ng", *language, 0, {}, [this, name](double speed) {
                              return std::make_unique<EspeakVoice>(Espeak(), name, speed, complain_);
                          }});
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
