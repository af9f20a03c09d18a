// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Mixes a show tick by tick and writes the sound to a file. It knows nothing of the show.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "sound/MixingEngine.h"
#include "sound/encoding/SoundFileWriter.h"

namespace sorakaze::studio {

/// For the baton's holder.
class Recorder {
  public:
    /// An empty `file`: the sound is mixed and dropped. Throws std::exception if the file can't be created.
    explicit Recorder(const std::filesystem::path& file);

    sound::MixingEngine& Engine() { return engine_; }
    /// Why the file could not be written; empty if all is well. The show's clock can't throw, so whoever runs
    /// the show asks.
    const std::string& Error() const { return error_; }
    bool IsSilent() const { return engine_.Sounding() == 0; }

    /// Mixes one tick more.
    void MixTick();
    /// Completes the file. Throws StudioError.
    void Finish();

  private:
    void WriteBlock();

    sound::MixingEngine engine_{sound::MixingMode::Offline};
    std::unique_ptr<sound::SoundFileWriter> writer_;
    std::vector<float> block_;  ///< mixed and not yet written
    /// Samples. The limiter delays the sound by these: the file begins with the show, not with the delay.
    std::size_t toSkip_ = static_cast<std::size_t>(engine_.Latency().count) * sound::kChannels;
    std::string error_;
};

}  // namespace sorakaze::studio
