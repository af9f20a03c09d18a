// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Hands what is mixed to another thread, which takes it at its own pace: an encoder's, a recording's.
#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "sound/Frames.h"
#include "sound/OutputTap.h"

namespace sorakaze::sound {

class TapRing final : public OutputTap {
  public:
    /// Holds at least `capacity`.
    explicit TapRing(Frames capacity)
        : frames_(std::bit_ceil(static_cast<std::uint64_t>(std::max<std::int64_t>(capacity.count, 1)))),
          samples_(frames_ * kChannels) {}

    /// What doesn't fit is dropped and counted.
    void OnMixed(std::span<const float> interleaved) noexcept override {
        const std::uint64_t written = written_.load(std::memory_order_relaxed);
        const std::uint64_t room = frames_ - (written - taken_.load(std::memory_order_acquire));
        const std::uint64_t given = interleaved.size() / kChannels;
        const std::uint64_t fitting = std::min(given, room);
        const std::size_t begin = written % frames_ * kChannels;
        const std::size_t first = std::min(fitting * kChannels, samples_.size() - begin);
        std::copy_n(interleaved.begin(), first, samples_.begin() + static_cast<std::ptrdiff_t>(begin));
        std::copy_n(interleaved.begin() + static_cast<std::ptrdiff_t>(first), fitting * kChannels - first,
                    samples_.begin());
        written_.store(written + fitting, std::memory_order_release);
        if (fitting < given)
            dropped_.store(dropped_.load(std::memory_order_relaxed) + given - fitting,
                           std::memory_order_relaxed);
    }

    /// The reading thread: moves the oldest frames to `interleaved`, as many as there are and fit. Returns
    /// how many frames that were.
    std::size_t Take(std::span<float> interleaved) {
        const std::uint64_t taken = taken_.load(std::memory_order_relaxed);
        const std::uint64_t there = written_.load(std::memory_order_acquire) - taken;
        const std::uint64_t frames = std::min<std::uint64_t>(there, interleaved.size() / kChannels);
        const std::size_t begin = taken % frames_ * kChannels;
        const std::size_t first = std::min(frames * kChannels, samples_.size() - begin);
        std::copy_n(samples_.begin() + static_cast<std::ptrdiff_t>(begin), first, interleaved.begin());
        std::copy_n(samples_.begin(), frames * kChannels - first,
                    interleaved.begin() + static_cast<std::ptrdiff_t>(first));
        taken_.store(taken + frames, std::memory_order_release);
        return frames;
    }

    /// Frames. Any thread.
    std::uint64_t Dropped() const { return dropped_.load(std::memory_order_relaxed); }

  private:
    const std::uint64_t frames_;
    std::vector<float> samples_;
    std::atomic<std::uint64_t> written_{0};  ///< frames; moved by the mixing thread
    std::atomic<std::uint64_t> taken_{0};    ///< frames; moved by the reading thread
    std::atomic<std::uint64_t> dropped_{0};  ///< frames; moved by the mixing thread
};

}  // namespace sorakaze::sound
