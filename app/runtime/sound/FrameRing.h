// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A ring of decoded frames between one writer (a worker thread that decodes) and one reader (the mixing
// thread). The reader takes no lock; only WaitForFrames, of which offline mixing alone makes use, sleeps.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "app/runtime/sound/Frames.h"

namespace sorakaze::sound {

class FrameRing {
  public:
    /// Frames; a power of two. About five seconds, two megabytes. Memory that was never written costs
    /// nothing.
    static constexpr std::size_t kCapacity = std::size_t{1} << 18;

    FrameRing() : samples_(std::make_unique_for_overwrite<float[]>(kCapacity * kChannels)) {}

    // --- the writer ---

    /// The room for frames that is free and lies in one piece.
    std::span<float> Writable() {
        const std::uint64_t written = written_.load(std::memory_order_relaxed);
        const std::size_t free =
            kCapacity - static_cast<std::size_t>(written - read_.load(std::memory_order_acquire));
        const std::size_t begin = written % kCapacity;
        return {samples_.get() + begin * kChannels, std::min(free, kCapacity - begin) * kChannels};
    }

    /// Hands the first `frames` of Writable to the reader.
    void Commit(std::size_t frames) {
        written_.store(written_.load(std::memory_order_relaxed) + frames, std::memory_order_release);
        Announce();
    }

    /// After the last Commit: nothing more will come.
    void Finish() {
        finished_.store(true, std::memory_order_release);
        Announce();
    }

    // --- the reader ---

    /// The frames that can be read and lie in one piece.
    std::span<const float> Readable() const {
        const std::uint64_t read = read_.load(std::memory_order_relaxed);
        const std::size_t filled = static_cast<std::size_t>(written_.load(std::memory_order_acquire) - read);
        const std::size_t begin = read % kCapacity;
        return {samples_.get() + begin * kChannels, std::min(filled, kCapacity - begin) * kChannels};
    }

    /// Frames that can be read; more may come at any time.
    std::size_t Filled() const {
        return static_cast<std::size_t>(written_.load(std::memory_order_acquire) -
                                        read_.load(std::memory_order_relaxed));
    }

    void Consume(std::size_t frames) {
        read_.store(read_.load(std::memory_order_relaxed) + frames, std::memory_order_release);
    }

    /// True when the last frame has been read.
    bool Drained() const { return IsFinished() && Filled() == 0; }

    /// Sleeps until there is a frame to read or none will ever come.
    void WaitForFrames() const {
        for (;;) {
            const std::uint32_t seen = announcements_.load(std::memory_order_acquire);
            if (Filled() > 0 || IsFinished()) return;
            announcements_.wait(seen, std::memory_order_acquire);
        }
    }

    // --- any thread ---

    bool IsFinished() const { return finished_.load(std::memory_order_acquire); }

    /// Frames of room. Exact for the writer, a lower bound for others.
    std::size_t Free() const {
        // The read index first: it never overtakes the written one, so the difference stays within the
        // capacity.
        const std::uint64_t read = read_.load(std::memory_order_acquire);
        return kCapacity -
               std::min<std::uint64_t>(kCapacity, written_.load(std::memory_order_acquire) - read);
    }

  private:
    void Announce() {
        announcements_.fetch_add(1, std::memory_order_release);
        announcements_.notify_one();
    }

    std::unique_ptr<float[]> samples_;
    alignas(64) std::atomic<std::uint64_t> written_{0};  // moved by the writer
    std::atomic<bool> finished_{false};                  // set by the writer
    mutable std::atomic<std::uint32_t> announcements_{
        0};                                           // counted up by the writer, waited for by the reader
    alignas(64) std::atomic<std::uint64_t> read_{0};  // moved by the reader
};

}  // namespace sorakaze::sound
