// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the output's tests share.
#pragma once

#include <gtest/gtest.h>

#include <thread>

#include "app/output/Loudspeaker.h"
#include "app/output/SilentClock.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::output {

/// The left channel of the float samples that a file holds, without any header.
inline sound::testing::Samples ReadLeft(const std::filesystem::path& file) {
    const std::string bytes = sound::testing::ReadBytes(file);
    const auto* first = reinterpret_cast<const float*>(bytes.data());
    return sound::testing::Channel({first, bytes.size() / sizeof(float)}, 0);
}

/// Waits for something that happens by itself, a generous time for a busy machine. False when it never does.
template <typename Condition>
bool Eventually(Condition happens) {
    const auto end = SilentClock::Clock::now() + std::chrono::seconds(30);
    while (!happens()) {
        if (SilentClock::Clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// For two seconds and longer, the frames mixed are those that the steady clock asks for, two blocks more or
/// less.
inline bool MixesInRealTime(const sound::MixingEngine& engine) {
    const auto first = engine.Mixed();
    if (!Eventually([&] { return engine.Mixed() > first; })) return false;
    const auto start = SilentClock::Clock::now();
    const auto before = engine.Mixed();
    // On a busy machine the mixing thread may be late at a given moment, but it doesn't stay behind.
    return Eventually([&] {
        const std::chrono::duration<double> elapsed = SilentClock::Clock::now() - start;
        const double due = elapsed.count() * sound::kSampleRate;
        const double mixed = static_cast<double>((engine.Mixed() - before).count);
        return elapsed.count() >= 2.0 && std::fabs(mixed - due) <= 2.0 * SilentClock::kBlock;
    });
}

}  // namespace sorakaze::output
