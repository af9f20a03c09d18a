// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Notices when nothing is heard although the program asks for no silence. It hears the engine's output, where
// everything has passed that could have gone wrong.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>

#include "show/ShowObserver.h"
#include "sound/OutputTap.h"

namespace sorakaze::studio {

/// Hears whether there is sound.
class SoundTap final : public sound::OutputTap {
  public:
    /// A peak below -60 dB counts as silence.
    static constexpr float kSilentPeak = 0.001f;

    void OnMixed(std::span<const float> interleaved) noexcept override {
        for (const float sample : interleaved) {
            if (sample > kSilentPeak || sample < -kSilentPeak) {
                blocks_.store(blocks_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
                return;
            }
        }
    }
    /// Blocks with sound so far. Any thread.
    std::uint64_t Blocks() const { return blocks_.load(std::memory_order_relaxed); }

  private:
    std::atomic<std::uint64_t> blocks_{0};
};

/// For the baton's holder.
class DeadAir final : public ShowObserver {
  public:
    enum class Verdict {
        Nothing,
        Silent,   ///< there has been no sound for kToldAfter; once
        Restart,  ///< for as long as the limit; once
        Over      ///< it is heard again after Silent
    };
    static constexpr double kToldAfter = 5;  ///< seconds

    /// `limit` is in seconds, `now` a clock in seconds.
    DeadAir(double limit, std::function<double()> now) : limit_(limit), now_(std::move(now)) {}

    /// A show begins, or is over: in between nothing counts.
    void Begin();
    void End() { running_ = false; }
    /// A `wait` is a silence that the program asks for.
    void OnShowEvent(const ShowEvent& event) override;
    /// To be called a few times a second; `sound`: whether there was any since the last call.
    Verdict Observe(bool sound);
    /// How long nothing has been heard, at the last call of Observe.
    double Seconds() const { return observed_ - since_; }

  private:
    const double limit_;
    const std::function<double()> now_;
    bool running_ = false;
    bool told_ = false;
    bool restarted_ = false;
    double since_ = 0;     ///< the silence, if it is one
    double observed_ = 0;  ///< the last call
    double waitEnds_ = 0;
};

}  // namespace sorakaze::studio
