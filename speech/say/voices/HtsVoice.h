// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// HTS voices in American English. Festival and its voice slt (the packages festival and festvox-us-slt-hts)
// turn the text into what such a voice speaks; other voices that were trained on the same labels speak too.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "speech/say/voices/VoiceEngine.h"

namespace sorakaze::speech {

struct HtsLook {
    std::filesystem::path voice;  ///< a .htsvoice file; empty for slt
    double size = 1;              ///< of the speaker's vocal tract: below 1 larger, a deeper voice
};

/// How an HTS voice speaks as the person of that first name (folded); nothing for other names.
std::optional<HtsLook> FindHtsLook(std::string_view folded);

/// True if the packages are installed.
bool HasHts();

class HtsVoice : public VoiceEngine {
  public:
    /// Makes temporary files in `scratch`.
    HtsVoice(HtsLook look, double speed, std::filesystem::path scratch);

    void Speak(const std::string& text, const SpeechSink& sink) override;

  private:
    HtsLook look_;
    double speed_;
    std::filesystem::path scratch_;
};

}  // namespace sorakaze::speech
