// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "sound/desk/LevelPlan.h"

namespace sorakaze::sound {

/// The level that a voice is played at, and what it was decided by.
struct VoiceLevel {
    enum class Source {
        None,      ///< nothing is known of the file: it is played as it is
        Tags,      ///< the file's own gain tags
        Measured,  ///< the file's measurement
    };
    LevelPlan plan;
    Source source = Source::None;
    std::optional<double> loudness;    ///< of the part that is played, before the gain, in LUFS
    bool isLost = false;               ///< it should have been measured, and that failed
    bool isWhole = false;              ///< measured to the sound's end: the plan has the end that it has
    std::optional<double> speechBand;  ///< its power in the band of speech, before the gain, in dBFS
};

}  // namespace sorakaze::sound
