// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A value that moves linearly, frame by frame, from where it is to where it was sent. Depends on the count of
// frames only, never on how they are cut into blocks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace sorakaze::sound {

class Ramp {
  public:
    explicit Ramp(float value) : target_(value) {}

    void Jump(float value) {
        target_ = value;
        delta_ = 0.0f;
        done_ = total_ = 0;
    }

    /// From the momentary value to `target` in `frames` frames.
    void MoveTo(float target, std::uint32_t frames) {
        const float now = Now();
        target_ = target;
        // Counted back from the target, which the last frame then meets exactly.
        delta_ = (now - target) / static_cast<float>(frames);
        done_ = 0;
        total_ = frames;
    }

    bool IsMoving() const { return done_ < total_; }
    std::size_t Remaining() const { return total_ - done_; }
    float Target() const { return target_; }
    float Now() const { return At(0); }

    /// The value of the frame that lies `frames` after the last one passed. A ramp that moves is asked for at
    /// most Remaining.
    float At(std::uint32_t frames) const {
        return target_ + delta_ * static_cast<float>(static_cast<std::int32_t>(total_ - done_ - frames));
    }

    void Pass(std::size_t frames) {
        if (frames < Remaining())
            done_ += static_cast<std::uint32_t>(frames);
        else
            Jump(target_);
    }

  private:
    float target_;
    float delta_ = 0.0f;
    std::uint32_t done_ = 0;
    std::uint32_t total_ = 0;
};

}  // namespace sorakaze::sound
