// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <thread>

namespace sorakaze::test {

/// Waits until `condition` holds, for a minute at most. True if it came to hold.
template <typename Condition>
bool Await(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    bool holds = false;
    while (!(holds = condition()) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return holds;
}

}  // namespace sorakaze::test
