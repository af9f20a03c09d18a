// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The contract between `say` and everything that can speak. A voice's name leads to candidates, best first
// (VoiceCatalogue.h); they are tried in that order until one has spoken (SpeakFirst.h).
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "speech/say/LongestSpeech.h"

namespace sorakaze::speech {

/// Takes a block of raw mono samples. Their rate is the same in all blocks of one text. Throws SpeechCut when
/// it has enough.
using SpeechSink = std::function<void(int sampleRate, std::span<const std::int16_t>, BlockStart)>;

/// A started engine, set to one voice. Used by one thread.
class VoiceEngine {
  public:
    virtual ~VoiceEngine() = default;

    /// Speaks a text that SpokenText and OrdinaryForms returned and returns when all is spoken. Throws
    /// std::runtime_error with one line for the user if it fails, even after its first samples, which are
    /// then dropped. Passes on what the sink throws. Ends in bounded time and memory whatever the text is; an
    /// engine that can't promise that runs in a process of its own.
    virtual void Speak(const std::string& text, const SpeechSink& sink) = 0;
};

/// One way to speak as a voice. Copying it starts nothing.
struct VoiceCandidate {
    std::string name;                    ///< of the voice, for the user: "Samantha", "slt"
    std::string engine;                  ///< "espeak-ng", "Open JTalk"
    std::string language;                ///< a code in lower case, such as "en" or "en-us"; may be empty
    double gain = 0;                     ///< decibels on top of the loudness that all voices get
    std::chrono::milliseconds pause{0};  ///< of silence at the end of the text, beside the usual one
    /// Starts the engine. A `speed` of 2 halves the time that the voice takes usually. Throws
    /// std::runtime_error with one line for the user if the voice isn't available.
    std::function<std::unique_ptr<VoiceEngine>(double speed)> start;
};

}  // namespace sorakaze::speech
