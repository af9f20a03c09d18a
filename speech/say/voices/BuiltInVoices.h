// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "speech/say/voices/VoiceCatalogue.h"

namespace sorakaze::speech {

class Engine;

/// The voices that need nothing but the system's packages: espeak-ng, which is always there, and before it
/// what is better and installed.
class BuiltInVoices : public VoiceSource {
  public:
    using Complain = std::function<void(std::string_view)>;

    /// `scratch` is the folder for temporary files. `complain` takes what the user should know though the
    /// voice speaks.
    BuiltInVoices(std::filesystem::path scratch, Complain complain);
    ~BuiltInVoices() override;

    /// First names, and the voices, languages and variants of espeak-ng.
    std::vector<VoiceCandidate> Named(const std::string& name) const override;
    std::vector<VoiceCandidate> ForLanguage(const std::string& language) const override;

  private:
    Engine& Espeak() const;

    std::filesystem::path scratch_;
    Complain complain_;
    mutable std::unique_ptr<Engine> espeak_;  ///< null until it is needed
};

}  // namespace sorakaze::speech
