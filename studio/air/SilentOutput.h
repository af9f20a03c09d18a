// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Runs the mixing engine in real time on a thread of its own where no device does: the sound goes to the
// engine's taps only.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "sound/MixingEngine.h"

namespace sorakaze::studio {

class SilentOutput {
  public:
    /// `engine` (MixingMode::RealTime) outlives it and is mixed by nobody else. Throws std::system_error
    /// where the system has no thread left.
    explicit SilentOutput(sound::MixingEngine& engine);
    ~SilentOutput();
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

  private:
    void Run();

    sound::MixingEngine& engine_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool ending_ = false;  ///< guarded by mutex_
    std::thread thread_;
};

}  // namespace sorakaze::studio
