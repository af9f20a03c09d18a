// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The power of sound in the band that carries speech, 300 to 3400 Hz: a band filter on every fourth frame's
// mean, cheap enough for the mixing thread. Allocates nothing.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "sound/Frames.h"

namespace sorakaze::sound {

class SpeechBand {
  public:
    /// Energy is taken of whole groups of so many frames.
    static constexpr std::size_t kGroup = 4;

    SpeechBand();

    /// The sum over the groups of the mean square of both channels in the band. `interleaved` continues what
    /// was passed before and holds a multiple of kGroup frames; divided by the number of groups the result is
    /// the mean power (0.5 for a full-scale sine on both sides, -3 dBFS).
    double Energy(std::span<const float> interleaved);

    /// Forgets the sound before.
    void Reset();

  private:
    /// One second-order filter, for both channels.
    struct Section {
        float b0, b1, b2, a1, a2;
        std::array<float, kChannels> s1{}, s2{};
        float Next(float in, std::size_t channel);
    };
    Section highPass_, lowPass_;
};

}  // namespace sorakaze::sound
