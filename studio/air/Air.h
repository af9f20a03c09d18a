// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Shows on the air, by the wall clock, without a window.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "onair/WallTime.h"

namespace sorakaze::studio {

struct AirShow {
    std::string program;
    std::string playlist = "Library";
};

/// Where the sound goes.
struct AirTargets {
    bool device = false;
    std::vector<std::filesystem::path> files;
};

/// `words` as --to has them; none means the device. Throws StudioError.
AirTargets ReadTargets(const std::vector<std::string>& words);

struct AirOptions {
    std::filesystem::path station;  ///< empty: the one that this program is in
    std::vector<AirShow> shows;     ///< at least one
    bool repeat = false;            ///< after the last show comes the first
    std::optional<onair::DayTime> start;
    AirTargets targets;
    bool graceful = false;      ///< the first signal lets the show end by its ending block
    std::filesystem::path log;  ///< the folder of the as-run log; empty: none
    double deadAir = 60;        ///< seconds of silence after which a show is started anew
    std::optional<std::int32_t> songSeconds;
    std::optional<std::uint64_t> seed;
    bool quiet = false;  ///< no transcript
};

/// Returns when the last show is over, or was ended by a signal. Throws StudioError.
void Air(const AirOptions& options);

}  // namespace sorakaze::studio
