// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

namespace sorakaze::sound {

/// Larger samples can only come from damaged or hostile float data. Sums of such values would poison every
/// filter that they pass.
inline constexpr float kSaneSample = 64.0f;

/// The sample, or silence in place of one that is no sane number.
inline float SaneSample(float sample) {
    return std::fabs(sample) <= kSaneSample ? sample : 0.0f;
}

}  // namespace sorakaze::sound
