// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The levels at which the desk plays files, by what was measured of them. Any thread but the mixing one.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "sound/Bus.h"
#include "sound/Decoders.h"
#include "sound/Frames.h"
#include "sound/MixingEngine.h"
#include "sound/desk/Measurements.h"
#include "sound/desk/VoiceLevel.h"

namespace sorakaze::sound {

/// How files are decoded under a desk.
DecodeOptions OptionsFor(Bus bus);

class Levels {
  public:
    /// `target` in LUFS.
    Levels(double target, std::shared_ptr<Decoders> decoders, MixingMode mode);

    /// The frames that a decoder measures on their way to the ring of a voice.
    Frames MeasuredInRing(Bus bus, Frames part) const;

    /// Of an effect or of speech that was just opened.
    VoiceLevel LevelOfShortSound(const std::filesystem::path& file, DecodedSound& sound, Bus bus);

    // As MixingEngine's. `measured` is what was measured on the way to the ring.
    void Want(const SoundSource& source, Frames part);
    VoiceLevel LevelOfMusic(const SoundSource& source, Frames part, std::optional<double> tagged,
                            const std::optional<Measurement>& measured);

  private:
    VoiceLevel LevelBy(const Measurement& measurement, Frames part, Bus bus) const;

    const double target_;
    const MixingMode mode_;
    Measurements measurements_;
};

}  // namespace sorakaze::sound
