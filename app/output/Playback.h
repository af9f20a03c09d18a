// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Passes the mixing engine between the device's callback and the control thread, so that never both mix. The
// callback takes no lock, allocates nothing and waits for nobody; a callback out of its turn, however late,
// gets silence.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>

#include "sound/MixingEngine.h"
#include "sound/Ramp.h"

namespace sorakaze::output {

class Playback {
  public:
    /// It's the control thread's turn at first.
    explicit Playback(sound::MixingEngine& engine) : engine_(engine) {}

    // The device's thread:

    /// Fills one buffer of the device: interleaved stereo.
    void Render(std::span<float> interleaved) noexcept;

    // The control thread:

    /// Mixes and drops the sound. Only during the control thread's turn.
    void MixSilently(std::span<float> scratch) { engine_.Mix(scratch); }
    /// From now on the device mixes. The sound is faded in within 20 ms.
    void GiveToDevice();
    /// After this the device doesn't mix. Waits for a running Mix, which itself never waits.
    void TakeFromDevice();
    /// Fades the sound out over a tenth of a second. It stays silent.
    void FadeOut() { fading_.store(true, std::memory_order_relaxed); }
    bool HasFaded() const { return faded_.load(std::memory_order_relaxed); }

    // Any thread:

    /// How many buffers the device has asked for.
    std::uint64_t CallbackCount() const { return callbackCount_.load(std::memory_order_relaxed); }
    /// How often the device asked so late that it must have run dry.
    std::uint64_t Gaps() const { return gaps_.load(std::memory_order_relaxed); }

  private:
    using Clock = std::chrono::steady_clock;
    enum class Turn { Control, Device, DeviceMixing };

    void Scale(std::span<float> interleaved);
    void CountGap(std::size_t frames);

    sound::MixingEngine& engine_;

    /// Guards the engine's mixing and the next four members: only the thread whose turn it is touches them.
    std::atomic<Turn> turn_{Turn::Control};
    sound::Ramp gain_{0.0f};
    bool closing_ = false;            ///< the fade to silence has begun
    Clock::time_point lastCallback_;  ///< the epoch: none since the device got its turn
    std::size_t lastFrames_ = 0;

    std::atomic<bool> fading_{false};              // control thread → device
    std::atomic<bool> faded_{false};               // device → control thread
    std::atomic<std::uint64_t> callbackCount_{0};  // written by the device
    std::atomic<std::uint64_t> gaps_{0};           // written by the device
};

}  // namespace sorakaze::output
