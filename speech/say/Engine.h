// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "speech/say/LongestSpeech.h"
#include "speech/say/VoiceNames.h"

namespace sorakaze::speech {

/// The speech engine, started once in a process. It needs its data under /usr and nothing else: no sound
/// device, no home folder. Errors are std::runtime_error with one line for the user.
class Engine {
  public:
    /// Takes a block of raw mono samples. Words for which the engine reports the start begin a block.
    using Sink = std::function<void(std::span<const std::int16_t>, BlockStart)>;

    Engine();
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    int SampleRate() const;

    /// The language of the voice of that name; nothing for an unknown name.
    std::optional<std::string> LanguageOf(const std::string& name) const;

    /// Chooses a voice by its name: a first name, a voice, language or variant of the engine, or one of the
    /// former and a variant joined by "+". A `speed` of 2 halves the time that it takes.
    void Choose(const std::string& name, double speed = 1);
    /// Whether SpeakJapanese is for the chosen voice.
    bool IsJapanese() const;

    enum class Reading {
        Text,      ///< literally
        Phonemes,  ///< the engine's codes in double brackets
        English,   ///< literally, by an English speaker with the chosen voice's pitch and timbre
    };
    /// Speaks a text that SpokenText returned into the sink and returns when all is spoken. Passes on what
    /// the sink throws.
    void Speak(const std::string& text, const Sink& sink, Reading reading = Reading::Text);

  private:
    void Use(const std::string& voice);

    VoiceLook look_;
    double speed_ = 1;
    std::string used_;  ///< the voice that the engine has now
};

}  // namespace sorakaze::speech
