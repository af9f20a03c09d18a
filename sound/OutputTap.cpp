// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/OutputTap.h"

#include <thread>

namespace sorakaze::sound {

bool OutputTaps::Add(OutputTap& tap) {
    for (auto& place : taps_) {
        OutputTap* none = nullptr;
        if (place.compare_exchange_strong(none, &tap)) return true;
    }
    return false;
}

void OutputTaps::Remove(OutputTap& tap) {
    for (auto& place : taps_) {
        OutputTap* expected = &tap;
        place.compare_exchange_strong(expected, nullptr);
    }
    // A turn that began before may still hold the tap.
    const std::uint64_t turn = turn_.load();
    while (turn % 2 == 1 && turn_.load() == turn) std::this_thread::yield();
}

void OutputTaps::Tell(std::span<const float> interleaved) noexcept {
    turn_.fetch_add(1);
    for (auto& place : taps_) {
        if (OutputTap* tap = place.load()) tap->OnMixed(interleaved);
    }
    turn_.fetch_add(1);
}

}  // namespace sorakaze::sound
