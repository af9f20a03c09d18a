// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <exception>
#include <string>

#include "speech/say/voices/VoiceEngine.h"

struct cst_voice_struct;

namespace sorakaze::speech {

/// How a speaker is made from a voice of Flite.
struct FliteLook {
    std::string voice;   ///< "slt", "rms", "awb", "kal16", or the path of a .flitevox file
    double pitch = 1;    ///< times the voice's own
    double range = 1;    ///< of the melody, times the voice's own
    double size = 1;     ///< of the speaker's vocal tract: below 1 larger, a deeper timbre
    double stretch = 1;  ///< times the voice's own durations
};

/// Flite, in English. It is run in a process of its own (SeparateEngine): it ends its program where a voice
/// file is broken.
class FliteEngine : public VoiceEngine {
  public:
    /// Throws std::runtime_error if there is no such voice.
    FliteEngine(const FliteLook& look, double speed);

    void Speak(const std::string& text, const SpeechSink& sink) override;

  private:
    FliteLook look_;
    cst_voice_struct* voice_;
};

}  // namespace sorakaze::speech
