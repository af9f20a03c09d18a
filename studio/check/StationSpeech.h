// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/runtime/RunFolder.h"
#include "gateway/Gateway.h"
#include "program/check/Surroundings.h"
#include "show/Deployment.h"
#include "studio/StationVoices.h"

namespace sorakaze::studio {

/// The voices of a station: asked of the programs that speak, with temporary files of its own. Main thread.
class StationSpeech {
  public:
    StationSpeech(std::filesystem::path station, Deployment deployment);
    ~StationSpeech();

    std::optional<check::Complaint> CheckVoice(const std::string& name);
    /// Nothing is known of the speakers of a service elsewhere.
    std::optional<check::Complaint> CheckSpeaker(const std::string& name) const;

    using LengthOf = std::function<std::optional<double>(const std::filesystem::path&)>;
    /// Has the application's own service speak the sentence; nullopt where it doesn't.
    std::optional<double> Measure(const std::string& speaker, const std::string& text,
                                  const LengthOf& lengthOf);

  private:
    const std::vector<Voice>& Voices();
    bool CanSpeak(const std::string& voice);
    std::optional<double> SpeakPage(const std::string& speaker, const std::string& text,
                                    const LengthOf& lengthOf);
    std::filesystem::path Folder();

    const std::filesystem::path station_;
    const std::filesystem::path resources_;
    Deployment deployment_;
    std::unique_ptr<RunFolder> folder_;
    std::unique_ptr<gateway::Gateway> gateway_;
    std::optional<std::vector<Voice>> listed_;
    std::map<std::string, bool> voices_;                     ///< whether `say` knows them
    std::map<std::string, std::optional<double>> measured_;  ///< by speaker and text
};

}  // namespace sorakaze::studio
