// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Voices of which nothing is mixed: they only pass, frame by frame, as those of a render do. For a rehearsal,
// which wants to know when things are heard and not how. A sound is decoded where its end counts, and never
// twice in one run of the program: music that goes on behind the part that is played isn't.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sound/MixingEngine.h"
#include "sound/SoundSource.h"

namespace sorakaze::sound {

class CountedVoice;

/// Any thread.
class SoundCounter {
  public:
    /// `target`: of the desk in LUFS; empty without one.
    SoundCounter(std::shared_ptr<Decoders> decoders, std::optional<double> target);

    /// As MixingEngine::Open.
    std::shared_ptr<Voice> Open(const SoundSource& source, Bus bus, Frames part, std::string* why);
    /// As MixingEngine::ReadTags, once for each file and run of the program.
    std::optional<std::string> ReadTags(const std::filesystem::path& file, std::string* why);
    /// All voices go on by so many frames.
    void Pass(Frames frames);
    /// As MixingEngine's.
    int Sounding();

  private:
    const std::shared_ptr<Decoders> decoders_;
    const std::optional<double> target_;
    std::mutex mutex_;                                   // guards what follows, and the voices
    std::vector<std::shared_ptr<CountedVoice>> voices_;  // what nobody else holds any more is let go
};

}  // namespace sorakaze::sound
