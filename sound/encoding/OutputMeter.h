// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Measures what is written to a file.
#pragma once

#include <mutex>
#include <optional>
#include <span>

#include "sound/desk/TruePeak.h"
#include "sound/encoding/SoundSink.h"
#include "sound/measuring/ProgrammeLoudness.h"

namespace sorakaze::sound {

/// What came out.
struct OutputLevels {
    float loudness;  ///< integrated, in LUFS; kSilentLoudness at least
    float truePeak;  ///< in dBTP; -150 at least
    float range;     ///< in LU
};

class OutputMeter final : public SoundSink {
  public:
    void Write(std::span<const float> interleaved) override;
    void Finish() override;

    /// Empty before Finish. Any thread; the others are for the writer's.
    std::optional<OutputLevels> Levels() const;

  private:
    ProgrammeLoudness loudness_;
    TruePeak peak_;

    mutable std::mutex mutex_;  ///< guards what follows
    std::optional<OutputLevels> levels_;
};

}  // namespace sorakaze::sound
