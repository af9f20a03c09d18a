// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The loudness of a sound without its pauses (ITU-R BS.1770: the gates at -70 LUFS and at 10 LU below the
// mean), in memory of fixed size however long the sound. One thread; it allocates once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sorakaze::sound {

class GatedLoudness {
  public:
    GatedLoudness();

    /// The next tenth of a second's power (see LoudnessSteps).
    void Add(float step);
    /// Of all steps so far, in LUFS, to within 0.05 LU; kSilentLoudness before the first four, 30 at most.
    float Integrated() const;

  private:
    /// Stretches of 0.4 s whose loudness is the same to a tenth.
    struct Bin {
        double power = 0;  ///< their sum
        std::uint32_t count = 0;
    };

    std::vector<Bin> bins_;
    Bin all_;
    std::array<float, 4> last_{};
    std::size_t steps_ = 0;
};

}  // namespace sorakaze::sound
