// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <vector>

#include "speech/say/folders/SherpaInterface.h"
#include "speech/say/folders/VoiceFolder.h"
#include "speech/say/voices/VoiceEngine.h"

namespace sorakaze::speech {

/// sherpa-onnx with a neural model. The library ends its process when a model is wrong: so this lives in a
/// process of its own, which may not bound its addresses, of which the library reserves many.
class SherpaVoice : public VoiceEngine {
  public:
    /// Loads library and model. Throws std::runtime_error.
    SherpaVoice(const std::filesystem::path& library, const VoiceModel& model, int speaker, double speed);
    void Speak(const std::string& text, const SpeechSink& sink) override;

  private:
    int speaker_;
    float speed_;
    const sherpa::Speaker* model_ = nullptr;  ///< lives as long as the process
    sherpa::Generate generate_ = nullptr;
    int sampleRate_ = 0;
};

/// The library's file in one of the places, or its bare name if the system's loader has to find it; empty if
/// it isn't there.
std::filesystem::path FindSherpa(const std::vector<std::filesystem::path>& places);

}  // namespace sorakaze::speech
