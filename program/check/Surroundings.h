// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "program/check/Finding.h"

namespace sorakaze::check {

/// What is wrong with a name that a program gives.
struct Complaint {
    Severity severity = Severity::Error;
    std::string code;
    std::string message;
    std::string better;  ///< what to write instead; empty if that isn't known
};

/// What the checker asks of the station that a program is for. Without a station nothing is wrong.
class Surroundings {
  public:
    Surroundings() = default;
    virtual ~Surroundings() = default;
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    /// Of what `play` would open: placeholders filled in, double quotes removed, trimmed.
    virtual std::vector<Complaint> CheckSound(const std::string& /*argument*/) { return {}; }
    /// Of the voice that `say` would be called with.
    virtual std::optional<Complaint> CheckVoice(const std::string& /*name*/) { return {}; }
    /// Of the speaker of `sayj` lines.
    virtual std::optional<Complaint> CheckSpeaker(const std::string& /*name*/) { return {}; }
    /// How long a `sayj` line is heard, in seconds, if it may be longer than `enough`; nullopt where that
    /// isn't known.
    virtual std::optional<double> SpeechSeconds(const std::string& /*speaker*/, const std::string& /*text*/,
                                                double /*enough*/) {
        return {};
    }
    /// Whether the name is a voice's.
    virtual bool IsVoice(const std::string& /*name*/) { return false; }
    /// Whether artists are looked up, so that introW blocks are drawn.
    virtual bool LooksUpArtists() const { return true; }
};

}  // namespace sorakaze::check
