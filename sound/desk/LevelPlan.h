// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How loud a sound is played, where its quiet beginning is lifted and where it is over, decided before it
// starts by what was measured of it. Pure: called by whoever opens a voice for the desk, never by the mixing
// thread.
#pragma once

#include <optional>

#include "sound/Bus.h"
#include "sound/Frames.h"
#include "sound/Measurement.h"

namespace sorakaze::sound {

struct LevelPlan {
    double gainDb = 0;          ///< for the whole sound, never changed within it; planned as -40 to 12
    double liftDb = 0;          ///< of its beginning, on top of the gain; 0 to 6
    Frames liftHold;            ///< played before the lift is given back, 1 dB in each second
    std::optional<Frames> end;  ///< played when the sound is over, although its file goes on
    Frames endFade;             ///< the fade to silence that is complete at `end`

    bool operator==(const LevelPlan&) const = default;
};

/// For a sound of which the first `part` frames will be played, to be as loud as `target` (LUFS). Whatever
/// was measured: the level stays within its bounds, and a sound of silence keeps its own.
LevelPlan PlanLevel(const Measurement& measurement, Frames part, double target, Bus bus);

/// The integrated loudness, in LUFS, of the first `part` frames of a sound that isn't silence.
double LoudnessOfPart(const Measurement& measurement, Frames part);

/// The gain in dB for a sound that wasn't measured and whose tags say that it is so loud (LUFS). Its peak is
/// not known, so it is raised by little. 0 for a loudness that no music has.
double GainFromTags(double loudness, double target);

}  // namespace sorakaze::sound
