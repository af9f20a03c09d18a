// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The sound card: plays what the mixing engine mixes on the device that the system has chosen. When a device
// or a sound server goes away, another is opened within seconds; meanwhile, and on a machine without a
// device, the engine is run silently in real time, so that a show never stops for the lack of a sound card.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "sound/MixingEngine.h"

namespace sorakaze::output {

class Loudspeaker {
  public:
    /// Starts playing; never fails for the lack of a device. `engine` (MixingMode::RealTime) outlives it, and
    /// is mixed by nobody else.
    explicit Loudspeaker(sound::MixingEngine& engine);
    /// Fades what is heard over a tenth of a second, then stops.
    ~Loudspeaker();
    Loudspeaker(const Loudspeaker&) = delete;
    Loudspeaker& operator=(const Loudspeaker&) = delete;

    // Any thread:

    /// True while a device plays; false while the output is silent.
    bool IsAudible() const;
    /// The driver, or why there is no device; for people.
    std::string Description() const;
    /// How often the device ran dry since the start, as far as is known, plus the engine's own underruns.
    std::uint64_t Underruns() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::output
