// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "program/check/Surroundings.h"
#include "sound/MixingEngine.h"

namespace sorakaze::studio {

/// The sounds that a station's programs play. Each file is opened once, as the show would open it.
class StationSounds {
  public:
    explicit StationSounds(std::filesystem::path station) : station_(std::move(station)) {}

    /// Of the argument of `play`, relative to the station.
    std::vector<check::Complaint> Check(const std::string& argument);
    /// So that files are looked at anew.
    void Forget() { known_.clear(); }
    /// In seconds; nullopt where the file is no sound.
    std::optional<double> LengthOf(const std::filesystem::path& file);

  private:
    std::vector<check::Complaint> Find(const std::string& argument);
    std::vector<check::Complaint> CheckFolder(const std::filesystem::path& folder,
                                              const std::string& argument);
    check::Complaint TellOfMissing(const std::string& argument) const;

    const std::filesystem::path station_;
    std::map<std::string, std::vector<check::Complaint>> known_;  ///< by argument
    std::unique_ptr<sound::MixingEngine> engine_;
};

}  // namespace sorakaze::studio
