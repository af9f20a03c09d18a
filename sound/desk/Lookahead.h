// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The power of a voice's next second or so in the band of speech, read from its ring before it is mixed. Used
// by the mixing thread alone; allocates nothing.
#pragma once

#include <array>
#include <cstddef>

#include "sound/DecodedSound.h"
#include "sound/MixingEngine.h"
#include "sound/SpeechBand.h"
#include "sound/desk/Ducker.h"

namespace sorakaze::sound {

class Lookahead {
  public:
    /// So many steps are known where the sound goes on for as long and a ring of the usual size holds it.
    static constexpr int kSteps = StepsFromSeconds(1.3);

    /// Brings the steps up to date with the ring, whose next frame is the sound's frame number `position`.
    /// Offline it waits until they are decoded.
    void Follow(DecodedSound& sound, Frames position, MixingMode mode);

    int Steps() const { return end_ - begin_; }
    /// The mean power of a step in the band, from 0, the step to be mixed next, to Steps.
    float Power(int step) const { return powers_[static_cast<std::size_t>(begin_ + step) % kCapacity]; }

  private:
    static constexpr std::size_t kCapacity = 256;
    static_assert(kCapacity >= kSteps);

    bool Analyse(RingReader& ring, std::size_t offset);

    SpeechBand band_;
    std::array<float, kCapacity> powers_{};
    std::array<float, kDeskStep * kChannels> step_{};
    std::int64_t origin_ = -1;  ///< the sound's frame at which step number 0 begins
    int begin_ = 0;             ///< the number of the step to be mixed next
    int end_ = 0;
};

}  // namespace sorakaze::sound
