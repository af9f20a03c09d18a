// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

#include "program/check/Surroundings.h"
#include "studio/check/StationSounds.h"
#include "studio/check/StationSpeech.h"

namespace sorakaze::studio {

enum class Speaking {
    Measured,  ///< sentences are spoken to know their length
    Skipped,
};

/// A station as the checker of programs asks for it.
class StationFacts : public check::Surroundings {
  public:
    /// Throws DeploymentError.
    StationFacts(const std::filesystem::path& station, Speaking speaking);

    std::vector<check::Complaint> CheckSound(const std::string& argument) override {
        return sounds_.Check(argument);
    }
    std::optional<check::Complaint> CheckVoice(const std::string& name) override {
        return speech_.CheckVoice(name);
    }
    std::optional<check::Complaint> CheckSpeaker(const std::string& name) override {
        return speech_.CheckSpeaker(name);
    }
    std::optional<double> SpeechSeconds(const std::string& speaker, const std::string& text,
                                        double enough) override;
    bool IsVoice(const std::string& name) override;
    bool LooksUpArtists() const override;

    /// Before the files are checked again.
    void Forget() { sounds_.Forget(); }

  private:
    const Deployment deployment_;
    const Speaking speaking_;
    StationSounds sounds_;
    StationSpeech speech_;
};

}  // namespace sorakaze::studio
