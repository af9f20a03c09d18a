// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A ring of decoded frames in memory that the application shares with a decoder's process. The decoder
// writes, the mixing thread reads. The reader takes no lock and trusts nothing: the indices are checked, each
// sample is read once and must be a sane number, and a ring with impossible indices counts as corrupt and at
// its end.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "sound/Frames.h"
#include "sound/SaneSample.h"

namespace sorakaze::sound {

/// The capacity of a ring in frames, a power of two. About five seconds, two megabytes; memory that was never
/// written costs nothing. The small one is for where the system allows no larger file, which shared memory
/// counts as.
inline constexpr std::uint32_t kRingCapacity = 1u << 18;
inline constexpr std::uint32_t kSmallRingCapacity = 1u << 14;
/// For a render: small enough for the processor's cache, and half of it holds what the desk looks ahead.
inline constexpr std::uint32_t kFastRingCapacity = 1u << 17;

/// How far ahead a decoder works once it has measured what it was asked to: a ring may have to hold that much
/// more than the mix needs.
constexpr std::uint32_t FramesAhead(std::uint32_t capacity, bool fast) {
    return std::min(capacity, fast ? kFastRingCapacity : kRingCapacity);
}

/// What the memory begins with. All zero at first.
struct RingHeader {
    alignas(64) std::atomic<std::uint64_t> written;  // frames; moved by the decoder
    std::atomic<std::uint32_t> finished;             // set by the decoder: nothing more will come
    std::atomic<std::uint32_t> sleeping;  // set by the decoder: it waits to be woken when there is room
    std::atomic<std::uint32_t> measured;  // set by the decoder: bytes of the measurement, at its offset
    alignas(64) std::atomic<std::uint64_t> read;  // frames; moved by the reader
    std::atomic<std::uint32_t> waiting;           // set by the reader: how many frames it waits for, or 0
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

inline constexpr std::size_t kRingMeasurementOffset = 1024;  ///< bytes
inline constexpr std::size_t kRingSamplesOffset = 4096;      ///< bytes
constexpr std::size_t RingBytes(std::uint32_t capacity) {
    return kRingSamplesOffset + std::size_t{capacity} * kChannels * sizeof(float);
}
static_assert(sizeof(RingHeader) <= kRingMeasurementOffset);

/// The decoder's side. `memory` is RingBytes long and outlives it.
class RingWriter {
  public:
    RingWriter(void* memory, std::uint32_t capacity)
        : capacity_(capacity),
          header_(*static_cast<RingHeader*>(memory)),
          samples_(reinterpret_cast<float*>(static_cast<char*>(memory) + kRingSamplesOffset)) {}

    std::size_t Filled() const {
        return static_cast<std::size_t>(std::min<std::uint64_t>(written_ - header_.read.load(), capacity_));
    }
    std::size_t Free() const { return static_cast<std::size_t>(capacity_) - Filled(); }
    /// The room for frames that is free and lies in one piece.
    std::span<float> Writable() {
        const std::size_t begin = written_ % capacity_;
        return {samples_ + begin * kChannels, std::min(Free(), capacity_ - begin) * kChannels};
    }
    /// Hands the first `frames` of Writable to the reader. True when the reader waits and there are now
    /// enough: then it must be woken.
    bool Commit(std::size_t frames) {
        written_ += frames;
        header_.written.store(written_);
        const std::uint32_t wanted = header_.waiting.load();
        return wanted != 0 && Filled() >= wanted && header_.waiting.exchange(0) != 0;
    }
    /// What was measured of the frames; left out where it is too long. Once.
    void SetMeasurement(std::string_view packed) {
        if (packed.empty() || packed.size() > kRingSamplesOffset - kRingMeasurementOffset) return;
        std::memcpy(reinterpret_cast<char*>(&header_) + kRingMeasurementOffset, packed.data(), packed.size());
        header_.measured.store(static_cast<std::uint32_t>(packed.size()));
    }
    /// After the last Commit. True when the reader waits.
    bool Finish() {
        header_.finished.store(1);
        return header_.waiting.exchange(0) != 0;
    }
    /// Before waiting for room: from here on the reader wakes the decoder. Check Filled once more afterwards.
    void AnnounceSleep() { header_.sleeping.store(1); }

  private:
    const std::uint64_t capacity_;
    RingHeader& header_;
    float* const samples_;
    std::uint64_t written_ = 0;
};

/// The mixing thread's side. `memory` is RingBytes long and outlives it.
class RingReader {
  public:
    /// The most frames that Peek gives at once.
    static constexpr std::size_t kMostFrames = 512;

    /// `ahead`: how many frames the decoder works ahead, see FramesAhead.
    RingReader(void* memory, std::uint32_t capacity, std::uint32_t ahead)
        : capacity_(capacity),
          ahead_(ahead),
          header_(*static_cast<RingHeader*>(memory)),
          samples_(reinterpret_cast<const float*>(static_cast<const char*>(memory) + kRingSamplesOffset)) {}

    std::size_t Ahead() const { return ahead_; }  ///< frames
    /// Frames that can be read; more may come at any time.
    std::size_t Filled() {
        const std::uint64_t written = header_.written.load();
        // A written frame is never taken back.
        if (written < known_ || written - read_ > capacity_) corrupt_.store(true, std::memory_order_relaxed);
        known_ = written;
        return IsCorrupt() ? 0 : static_cast<std::size_t>(written - read_);
    }
    /// No frames will come beyond those that Filled reports from now on.
    bool IsFinished() const { return IsCorrupt() || gone_.load(std::memory_order_acquire) || IsComplete(); }
    /// The last frame has been read.
    bool IsDrained() { return IsFinished() && Filled() == 0; }

    /// A copy of the next frames, `most` at most, without those that are no sane numbers; valid until the
    /// next call. Empty where there are none.
    std::span<const float> Peek(std::size_t most) { return PeekAt(0, most); }
    /// The same of the frames after the next `offset` ones.
    std::span<const float> PeekAt(std::size_t offset, std::size_t most) {
        const std::size_t begin = (read_ + offset) % capacity_;
        const std::size_t filled = Filled();
        const std::size_t there = filled - std::min(filled, offset);
        const std::size_t count = std::min({most, there, capacity_ - begin, kMostFrames});
        const float* const from = samples_ + begin * kChannels;
        for (std::size_t i = 0; i < count * kChannels; ++i) block_[i] = from[i];
        // The compiler must not read the shared memory a second time.
        std::atomic_signal_fence(std::memory_order_seq_cst);
        for (std::size_t i = 0; i < count * kChannels; ++i) block_[i] = SaneSample(block_[i]);
        return {block_, count * kChannels};
    }
    void Consume(std::size_t frames) {
        read_ += frames;
        header_.read.store(read_, std::memory_order_release);
    }

    /// True, once, when half of the frames ahead are read and the decoder waits to be woken.
    bool TakeWakeRequest() {
        return Filled() <= ahead_ / 2 && !IsFinished() &&
               header_.sleeping.load(std::memory_order_relaxed) != 0 && header_.sleeping.exchange(0) != 0;
    }
    /// Before waiting for `frames` frames, at most half of those ahead: the decoder wakes the reader when
    /// there are enough for both sides to work for a while. Check Filled and IsFinished once more afterwards.
    void AnnounceWait(std::size_t frames) {
        header_.waiting.store(static_cast<std::uint32_t>(std::max<std::size_t>(frames, ahead_ / 4)));
    }

    // --- any thread ---

    /// A copy of what SetMeasurement was given, foreign bytes; empty while there is nothing.
    std::string Measurement() const {
        constexpr std::uint32_t kMost = kRingSamplesOffset - kRingMeasurementOffset;
        const std::uint32_t bytes = std::min(header_.measured.load(std::memory_order_acquire), kMost);
        return {reinterpret_cast<const char*>(&header_) + kRingMeasurementOffset, bytes};
    }
    /// The decoder wrote impossible indices.
    bool IsCorrupt() const { return corrupt_.load(std::memory_order_relaxed); }
    /// The decoder says that the sound is whole.
    bool IsComplete() const { return header_.finished.load(std::memory_order_acquire) != 0; }
    /// The decoder is gone.
    void SetGone() { gone_.store(true, std::memory_order_release); }

  private:
    const std::uint64_t capacity_;
    const std::size_t ahead_;
    RingHeader& header_;
    const float* const samples_;
    std::uint64_t read_ = 0;
    std::uint64_t known_ = 0;           ///< frames written, at the last check
    std::atomic<bool> corrupt_{false};  // set by the mixing thread
    std::atomic<bool> gone_{false};
    float block_[kMostFrames * kChannels];
};

}  // namespace sorakaze::sound
