// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "speech/say/folders/VoiceFolder.h"
#include "speech/say/voices/VoiceCatalogue.h"

namespace sorakaze::speech {

/// The voices in the user's folders. A folder's name, and the names that its voice.json gives, are the
/// voice's. Each of them is read when it is asked for.
class FolderVoices : public VoiceSource {
  public:
    /// `places` are the folders that hold voices, preferred ones first. `scratch` is the folder for temporary
    /// files. No engine speaks after `deadline`, so that time is left for the next voice. `others` replace a
    /// voice that has a first name of theirs.
    FolderVoices(std::vector<std::filesystem::path> places, std::filesystem::path scratch,
                 std::chrono::steady_clock::time_point deadline, const VoiceSource& others);

    std::vector<VoiceCandidate> Named(const std::string& name) const override;
    std::vector<VoiceCandidate> ForLanguage(const std::string& language) const override;

    std::optional<VoiceFolder> Find(const std::string& name) const;
    /// Those of the same name but the first are left out.
    std::vector<VoiceFolder> All() const;

  private:
    std::vector<VoiceCandidate> CandidatesOf(const VoiceFolder& voice) const;
    VoiceCandidate CandidateOf(const VoiceFolder& voice, const VoiceModel& model) const;
    std::unique_ptr<VoiceEngine> Start(const VoiceFolder& voice, const VoiceModel& model, double speed) const;

    const std::vector<std::filesystem::path> places_;
    const std::filesystem::path scratch_;
    const std::chrono::steady_clock::time_point deadline_;
    const VoiceSource& others_;
};

}  // namespace sorakaze::speech
