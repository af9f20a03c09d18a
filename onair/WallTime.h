// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The time of day as people and logs have it. Any thread.
#pragma once

#include <chrono>
#include <string>

namespace sorakaze::onair {

using WallTime = std::chrono::system_clock::time_point;

/// "2026-11-24T07:00:00.250+01:00": ISO 8601, local, with milliseconds and zone.
std::string IsoTime(WallTime time);
/// "2026-11-24", local.
std::string IsoDay(WallTime time);

struct DayTime {
    int hour = 0;
    int minute = 0;
};
/// The next time after `now` at which the local clock shows that. Where it is set forward over it on that
/// day, the moment that the system takes it for.
WallTime NextTime(DayTime time, WallTime now);

}  // namespace sorakaze::onair
