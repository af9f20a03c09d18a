// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Whoever is given what the mixing engine has mixed, behind the limiter, beside the device: a recording, a
// stream, the watch for silence.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace sorakaze::sound {

class OutputTap {
  public:
    virtual ~OutputTap() = default;
    /// Interleaved frames (kChannels samples each) at kSampleRate, without a gap from call to call. Called on
    /// the mixing thread: no lock, no allocation, no system call.
    virtual void OnMixed(std::span<const float> interleaved) noexcept = 0;
};

/// The taps of an engine.
class OutputTaps {
  public:
    static constexpr std::size_t kMost = 32;

    /// Any thread but the mixing one. False when there are kMost already. A tap is added once.
    bool Add(OutputTap& tap);
    /// Any thread but the mixing one. When this returns, the tap isn't called any more. Nothing happens to
    /// one that wasn't added.
    void Remove(OutputTap& tap);
    /// The mixing thread.
    void Tell(std::span<const float> interleaved) noexcept;

  private:
    std::array<std::atomic<OutputTap*>, kMost> taps_{};
    std::atomic<std::uint64_t> turn_{0};  ///< odd while taps are told; moved by the mixing thread
};

}  // namespace sorakaze::sound
