// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "speech/say/VoiceNames.h"

namespace sorakaze::speech {

/// The speech engine, started once in a process. It needs its data under /usr and nothing else: no sound
/// device, no home folder. Errors are std::runtime_error with one line for the user.
class Engine {
  public:
    /// Takes a block of raw mono samples.
    using Sink = std::function<void(std::span<const std::int16_t>)>;

    Engine();
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    int SampleRate() const;

    /// Chooses the voice that `name` stands for: a first name, a voice, language or variant of the engine's
    /// own, or one of the former and a variant joined by "+".
    void Choose(const std::string& name);

    /// Speaks a text (as SpokenText gives it) into the sink and returns when all is spoken. What the sink
    /// throws is thrown here.
    void Speak(const std::string& text, const Sink& sink);
};

}  // namespace sorakaze::speech
