// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "sound/MixingEngine.h"

namespace sorakaze {

/// A sound of the system's own, as OpenAsSound gives it. It is stopped when its last reference goes. Only
/// with the baton.
class Sound {
  public:
    Sound(std::filesystem::path path, std::shared_ptr<sound::Voice> voice)
        : path_(std::move(path)), voice_(std::move(voice)) {}

    /// Starts from the beginning and returns at once. Only the first call has an effect.
    void Play();
    void Stop();
    bool IsPlaying() const { return voice_->IsPlaying(); }

    /// 0 to 100, the amplitude in percent; takes effect at once. Kept within the range.
    std::int32_t Volume() const { return volume_; }
    void SetVolume(std::int32_t volume);

    /// Seconds of it that have been heard.
    double Played() const { return voice_->Position().Seconds(); }

    /// What the desk plays it at; empty without a desk.
    std::optional<sound::VoiceLevel> Level() const { return voice_->Level(); }

    const std::filesystem::path& Path() const { return path_; }
    /// Length in seconds as the file states it, 0 where it doesn't.
    double Seconds() const;

  private:
    std::filesystem::path path_;
    std::shared_ptr<sound::Voice> voice_;
    std::int32_t volume_ = 100;
};

/// Tells the desk that a sentence is being prepared or follows soon: where music is down for the one before,
/// it stays down, 1.5 seconds at most. With the baton.
void ExpectSpeech();

}  // namespace sorakaze
