// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Where the mixing engine is handed to and fro between the device's callback and the control thread, so that
// it is never mixed by both. The callback's side takes no lock, allocates nothing and waits for nobody; a
// callback that comes while it isn't the device's turn, however late, gets silence.
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

    /// Mixes without being heard. Only while it is the control thread's turn.
    void MixUnheard(std::span<float> scratch) { engine_.Mix(scratch); }
    /// From now on the device mixes; what is heard swells from silence within some milliseconds.
    void GiveToDevice();
    /// From the return on the device mixes no more. Waits for a running Mix, which never waits for anything
    /// itself.
    void TakeFromDevice();
    /// What is heard from now on fades over a tenth of a second. For good.
    void FadeOut() { fading_.store(true, std::memory_order_relaxed); }
    bool HasFaded() const { return faded_.load(std::memory_order_relaxed); }

    // Any thread:

    /// How many buffers the device has asked for: its sign of life.
    std::uint64_t Beats() const { return beats_.load(std::memory_order_relaxed); }
    /// How often the device asked so late that it must have run dry.
    std::uint64_t Gaps() const { return gaps_.load(std::memory_order_relaxed); }

  private:
    using Clock = std::chrono::steady_clock;
    enum class Turn { Control, Device, DeviceMixing };

    void Scale(std::span<float> interleaved);
    void WatchForGap(std::size_t frames);

    sound::MixingEngine& engine_;

    /// Guards the engine's mixing and the four members below: only whose turn it is touches them.
    std::atomic<Turn> turn_{Turn::Control};
    sound::Ramp gain_{0.0f};
    bool closing_ = false;        ///< the gain has been sent down
    Clock::time_point lastBeat_;  ///< the epoch: there was none since the device got its turn
    std::size_t lastFrames_ = 0;

    std::atomic<bool> fading_{false};      // control thread → device
    std::atomic<bool> faded_{false};       // device → control thread
    std::atomic<std::uint64_t> beats_{0};  // written by the device
    std::atomic<std::uint64_t> gaps_{0};   // written by the device
};

}  // namespace sorakaze::output
