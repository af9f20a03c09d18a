// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A sound file's frames on their way out of a decoder's process, at the application's end: the ring that the
// mixing thread reads and the socket that tells of the decoder's end. Made by Decoders.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "base/FileDescriptor.h"
#include "sound/DecoderProcess.h"
#include "sound/Frames.h"
#include "sound/SharedRing.h"

namespace sorakaze::sound {

/// Which file a descriptor is of, and in which state: a file that is changed is another one.
struct FileIdentity {
    std::uint64_t device, node, size, changedSeconds, changedNanoseconds;
    auto operator<=>(const FileIdentity&) const = default;
};

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
    /// Only the mapping is left.
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
        DecoderProcess::JobName job;
    };

    DecodedSound(Origin origin, std::unique_ptr<SharedMemory> memory, FileDescriptor socket,
                 std::optional<Frames> length,
                 std::chrono::milliseconds longestStandstill = kLongestStandstill);
    /// The decoder ends.
    ~DecodedSound() = default;

    /// What the container states.
    std::optional<Frames> Length() const { return length_; }
    const Origin& From() const { return origin_; }
    /// How long its decoder may take for the next frames.
    std::chrono::milliseconds LongestStandstill() const { return longestStandstill_; }

    // --- the mixing thread ---

    RingReader& Ring() { return ring_; }
    /// Not for a device's thread: sleeps until there is a frame to read or none will ever come, because the
    /// sound is over, or its decoder ended or stood still for too long.
    void WaitForFrames();
    /// Not for a device's thread: after frames were consumed.
    void TellOfRoom();

    // --- any other thread ---

    /// The frames are about to be consumed.
    void Begin();
    /// Never read from: its hang-up is the decoder's end.
    int Socket() const { return socket_.Get(); }
    bool HasHungUp() const;
    /// The decoder is gone or is to be taken as such.
    void GiveUp() { ring_.SetGone(); }
    /// The sound was waited for in vain.
    bool StoodStill() const { return stoodStill_.load(); }
    void SetStoodStill() { stoodStill_.store(true); }

  private:
    const Origin origin_;
    const std::unique_ptr<SharedMemory> memory_;
    const FileDescriptor socket_;
    const std::optional<Frames> length_;
    const std::chrono::milliseconds longestStandstill_;
    RingReader ring_;
    std::atomic<bool> stoodStill_{false};
};

}  // namespace sorakaze::sound
