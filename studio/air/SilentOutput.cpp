// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/air/SilentOutput.h"

#include <vector>

#include "app/output/SilentClock.h"

namespace sorakaze::studio {

SilentOutput::SilentOutput(sound::MixingEngine& engine) : engine_(engine), thread_([this] { Run(); }) {}

SilentOutput::~SilentOutput() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    ended_.notify_all();
    thread_.join();
}

void SilentOutput::Run() {
    using output::SilentClock;
    std::vector<float> block(SilentClock::kBlock * sound::kChannels);
    SilentClock clock(SilentClock::Clock::now());
    std::unique_lock lock(mutex_);
    while (!ended_.wait_until(lock, clock.NextDeadline(), [this] { return ending_; })) {
        lock.unlock();
        for (auto due = clock.TakeDueBlocks(SilentClock::Clock::now()); due > 0; --due) engine_.Mix(block);
        lock.lock();
    }
}

}  // namespace sorakaze::studio
