// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The loudness and the loudness range of hours of sound (ITU-R BS.1770, EBU Tech 3342). One thread; it
// allocates.
#pragma once

#include <span>
#include <vector>

#include "sound/measuring/GatedLoudness.h"
#include "sound/measuring/LoudnessSteps.h"

namespace sorakaze::sound {

class ProgrammeLoudness {
  public:
    /// Continues the sound. How it is cut into parts makes no difference.
    void Add(std::span<const float> interleaved);
    /// The sound is over: counts its last seconds. Add isn't called any more.
    void Finish();

    /// Of what is counted, without pauses (gated), in LUFS; kSilentLoudness at least.
    float Integrated() const { return gated_.Integrated(); }
    /// In LU, 0 at least.
    float Range() const;

  private:
    void Take(std::size_t most);

    LoudnessSteps weighed_;
    GatedLoudness gated_;
    std::vector<float> steps_;  ///< of each tenth of a second the power
};

}  // namespace sorakaze::sound
