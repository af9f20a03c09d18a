// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/encoding/OutputMeter.h"

#include <algorithm>
#include <cmath>

namespace sorakaze::sound {

void OutputMeter::Write(std::span<const float> interleaved) {
    loudness_.Add(interleaved);
    peak_.Add(interleaved);
}

void OutputMeter::Finish() {
    constexpr float kSmallest = 3e-8f;  // -150 dB
    loudness_.Finish();
    const float peak = 20 * std::log10(std::max(peak_.Peak(), kSmallest));
    const std::lock_guard lock(mutex_);
    levels_ = {loudness_.Integrated(), peak, loudness_.Range()};
}

std::optional<OutputLevels> OutputMeter::Levels() const {
    const std::lock_guard lock(mutex_);
    return levels_;
}

}  // namespace sorakaze::sound
