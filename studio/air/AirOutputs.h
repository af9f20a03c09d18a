// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Where the sound of a show on the air goes: the device, files. Without a device the engine runs on its own.
// Main thread.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "app/output/Loudspeaker.h"
#include "studio/air/Air.h"
#include "studio/air/LiveRecording.h"
#include "studio/air/SilentOutput.h"

namespace sorakaze::studio {

class AirOutputs {
  public:
    /// Begins at once with those that work; `engine` outlives it. Throws StudioError where none does.
    AirOutputs(sound::MixingEngine& engine, const AirTargets& targets);

    /// What there is to tell since the last call: lines for people.
    std::vector<std::string> TakeNews();
    /// Completes the files and ends the sound. Returns complaints.
    std::vector<std::string> Finish();

  private:
    void CheckDevice();

    std::vector<std::string> news_;
    std::vector<std::unique_ptr<LiveRecording>> recordings_;
    std::unique_ptr<output::Loudspeaker> loudspeaker_;
    std::unique_ptr<SilentOutput> silent_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    bool audible_ = true;  ///< as it was told last
};

}  // namespace sorakaze::studio
