// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "onair/WallTime.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace sorakaze::onair {
namespace {

using std::chrono::system_clock;

std::tm LocalTime(WallTime time) {
    const std::time_t seconds = system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
    std::tm local{};
    localtime_r(&seconds, &local);
    return local;
}

std::string Format(const std::tm& local, const char* format) {
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &local)};
}

}  // namespace

std::string IsoTime(WallTime time) {
    const std::tm local = LocalTime(time);
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
    std::array<char, 16> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%03d",
                  static_cast<int>((milliseconds % 1000 + 1000) % 1000));
    std::string zone = Format(local, "%z");
    if (zone.size() == 5) zone.insert(3, ":");
    return Format(local, "%Y-%m-%dT%H:%M:%S") + fraction.data() + zone;
}

std::string IsoDay(WallTime time) {
    return Format(LocalTime(time), "%Y-%m-%d");
}

WallTime NextTime(DayTime time, WallTime now) {
    std::tm local = LocalTime(now);
    const int day = local.tm_mday;
    for (int later = 0;; ++later) {
        local.tm_mday = day + later;
        local.tm_hour = time.hour;
        local.tm_min = time.minute;
        local.tm_sec = 0;
        local.tm_isdst = -1;
        std::tm normal = local;
        const WallTime next = system_clock::from_time_t(std::mktime(&normal));
        if (next > now || later > 1) return next;
    }
}

}  // namespace sorakaze::onair
