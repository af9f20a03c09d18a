// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "speech/say/voices/VoiceEngine.h"

namespace sorakaze::speech {

struct EngineBounds {
    std::chrono::milliseconds firstSound{5'000};  ///< from the start to the first samples
    std::chrono::milliseconds wholeText{20'000};
    std::uint64_t memory = 512ull << 20;  ///< bytes in use, not of address space; 0 for no bound
};

/// Speaks with an engine in a process of its own, so that what it crashes on, waits for or allocates ends the
/// engine alone. Anything that reads a user's model or runs code that isn't the system's belongs in here.
/// Start and Speak of the engine both happen in that process; its standard output is dropped.
class SeparateEngine : public VoiceEngine {
  public:
    using Start = std::function<std::unique_ptr<VoiceEngine>()>;
    SeparateEngine(Start start, EngineBounds bounds) : start_(std::move(start)), bounds_(bounds) {}

    /// Throws std::runtime_error for a bound that was exceeded, a crash, or what the engine threw.
    void Speak(const std::string& text, const SpeechSink& sink) override;

  private:
    Start start_;
    EngineBounds bounds_;
};

}  // namespace sorakaze::speech
