// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Mixes a show tick by tick and writes the sound to a file. It knows nothing of the show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sound/MixingEngine.h"
#include "sound/encoding/OutputMeter.h"
#include "sound/encoding/SoundFileWriter.h"

namespace sorakaze::studio {

/// Whether the levels of what is written are measured, which costs about a tenth of a render's processor
/// time.
enum class Metering { Off, On };

/// A time in which nothing plays, in ticks since the recorder was made.
struct Silence {
    std::int64_t begin, end;
};

/// For the baton's holder.
class Recorder {
  public:
    /// MixingMode::Counting: no sound is made, and silences are noted.
    explicit Recorder(sound::MixingMode mode)
        : engine_(mode), notesSilence_(mode == sound::MixingMode::Counting) {}

    sound::MixingEngine& Engine() { return engine_; }
    /// Before the first tick, when the engine has its desk. Without this, or with an empty `file`, the sound
    /// is mixed and dropped. Throws std::exception if the file can't be created.
    void Begin(const std::filesystem::path& file, Metering metering);
    /// Why the file could not be written; empty if all is well. The show's clock can't throw, so whoever runs
    /// the show asks.
    const std::string& Error() const { return error_; }
    bool IsSilent() const { return engine_.Sounding() == 0; }

    /// Those so far.
    const std::vector<Silence>& Silences() const { return silences_; }

    /// Mixes one tick more.
    void MixTick();
    /// Completes the file. Throws StudioError.
    void Finish();
    /// Of the sound in the file; empty before Finish, and where nothing was measured or written.
    std::optional<sound::OutputLevels> Levels() const { return meter_ ? meter_->Levels() : std::nullopt; }

  private:
    void NoteSilence();
    void WriteBlock();

    sound::MixingEngine engine_;
    const bool notesSilence_;
    std::int64_t ticks_ = 0;
    std::vector<Silence> silences_;
    std::shared_ptr<sound::OutputMeter> meter_;
    std::unique_ptr<sound::SoundFileWriter> writer_;
    std::vector<float> block_;  ///< mixed and not yet written
    /// Frames. The limiter delays the sound: the file begins with the show, not with the delay.
    std::int64_t skipped_ = 0;
    std::string error_;
};

}  // namespace sorakaze::studio
