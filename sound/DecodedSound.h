// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The application's side of a sound file that a decoder process decodes: the ring that the mixing thread
// reads, and the socket that hangs up when the decoder ends. Made by Decoders.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "base/FileDescriptor.h"
#include "base/RegularFile.h"
#include "sound/DecoderProcess.h"
#include "sound/Frames.h"
#include "sound/Measurement.h"
#include "sound/SharedRing.h"

namespace sorakaze::sound {

/// Identifies a file and its state: a file that has changed is another one.
struct FileIdentity {
    std::uint64_t device, node, size, changedSeconds, changedNanoseconds;
    auto operator<=>(const FileIdentity&) const = default;
};

FileIdentity IdentityOf(const RegularFile& file);

/// A ring's memory, which another process can write but not shrink.
class SharedMemory {
  public:
    /// Zeroed, of this capacity in frames or, where the system allows no file so large, of the small one.
    /// Throws std::system_error.
    explicit SharedMemory(std::uint32_t capacity = kRingCapacity);
    ~SharedMemory();
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    void* Address() const { return address_; }
    std::uint32_t Capacity() const { return capacity_; }  ///< frames
    int Descriptor() const { return descriptor_.Get(); }
    /// The mapping stays.
    void CloseDescriptor() { descriptor_.Close(); }

  private:
    FileDescriptor descriptor_;
    std::uint32_t capacity_;
    void* address_;
};

class DecodedSound {
  public:
    struct Origin {
        std::filesystem::path file;
        FileIdentity identity;
        DecoderProcess::JobId job;
        Frames measured{};  ///< so many first frames are measured
        bool isFast = false;
    };

    DecodedSound(Origin origin, std::unique_ptr<SharedMemory> memory, FileDescriptor socket,
                 std::optional<Frames> length, std::chrono::milliseconds stallTimeout = kStallTimeout);
    /// The decoder ends.
    ~DecodedSound() = default;

    /// What the container states.
    std::optional<Frames> Length() const { return length_; }
    const Origin& From() const { return origin_; }
    /// How long the decoder may take for the next frames.
    std::chrono::milliseconds StallTimeout() const { return stallTimeout_; }

    /// What was measured of the frames that Open was told to measure; waits for it, at most for `most` and
    /// for StallTimeout. Empty where that isn't done. Not the mixing thread, and only before that reads the
    /// ring.
    std::optional<Measurement> AwaitMeasurement(
        std::chrono::milliseconds most = std::chrono::milliseconds::max());

    // --- the mixing thread ---

    RingReader& Ring() { return ring_; }
    /// Not for a device's thread: sleeps until there are `frames` frames to read, at most half of the
    /// ring's frames ahead, or no more will come, because the sound is over or its decoder has ended or
    /// stalled.
    void WaitForFrames(std::size_t frames = 1);
    /// After frames were consumed: wakes the decoder if it waits for room. Not for a device's thread.
    void WakeDecoder();

    // --- any other thread ---

    /// Tells the decoder that frames are being consumed.
    void Begin();
    /// Never read from: it hangs up when the decoder ends.
    int Socket() const { return socket_.Get(); }
    bool HasHungUp() const;
    /// No more frames are expected: the decoder is gone.
    void GiveUp() { ring_.SetGone(); }
    /// The decoder took longer than StallTimeout.
    bool HasStalled() const { return stalled_.load(); }
    void SetStalled() { stalled_.store(true); }

  private:
    const Origin origin_;
    const std::unique_ptr<SharedMemory> memory_;
    const FileDescriptor socket_;
    const std::optional<Frames> length_;
    const std::chrono::milliseconds stallTimeout_;
    RingReader ring_;
    std::atomic<bool> stalled_{false};
};

}  // namespace sorakaze::sound
