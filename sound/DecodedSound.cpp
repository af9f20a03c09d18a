// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/DecodedSound.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

#include "sound/MixingThread.h"

namespace sorakaze::sound {

FileIdentity IdentityOf(const RegularFile& file) {
    const auto& status = file.status;
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
            static_cast<std::uint64_t>(status.st_mtim.tv_sec),
            static_cast<std::uint64_t>(status.st_mtim.tv_nsec)};
}

SharedMemory::SharedMemory(std::uint32_t capacity)
    : descriptor_(::memfd_create("sorakaze-sound", MFD_CLOEXEC | MFD_ALLOW_SEALING)), capacity_(capacity) {
    rlimit largest{};
    ::getrlimit(RLIMIT_FSIZE, &largest);
    if (largest.rlim_cur < RingBytes(capacity_)) capacity_ = kSmallRingCapacity;
    const bool made =
        descriptor_ && ::ftruncate(descriptor_.Get(), static_cast<off_t>(RingBytes(capacity_))) == 0;
    // Without the seals the other side could cut the memory off under the reader.
    if (!made || ::fcntl(descriptor_.Get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        throw std::system_error(errno, std::generic_category(), "shared memory");
    address_ =
        ::mmap(nullptr, RingBytes(capacity_), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_.Get(), 0);
    if (address_ == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "shared memory");
}

SharedMemory::~SharedMemory() {
    ::munmap(address_, RingBytes(capacity_));
}

DecodedSound::DecodedSound(Origin origin, std::unique_ptr<SharedMemory> memory, FileDescriptor socket,
                           std::optional<Frames> length, std::chrono::milliseconds stallTimeout)
    : origin_(std::move(origin)),
      memory_(std::move(memory)),
      socket_(std::move(socket)),
      length_(length),
      stallTimeout_(stallTimeout),
      ring_(memory_->Address(), memory_->Capacity(), FramesAhead(memory_->Capacity(), origin_.isFast)) {
    memory_->CloseDescriptor();
}

void DecodedSound::Begin() {
    const char word = 'b';
    ::send(socket_.Get(), &word, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
}

void DecodedSound::WakeDecoder() {
    AssertMixingThread();
    if (ring_.TakeWakeRequest()) Begin();
}

bool DecodedSound::HasHungUp() const {
    pollfd socket{socket_.Get(), 0, 0};
    return ::poll(&socket, 1, 0) > 0 && (socket.revents & (POLLHUP | POLLERR)) != 0;
}

std::optional<Measurement> DecodedSound::AwaitMeasurement(std::chrono::milliseconds most) {
    AssertNotMixingThread();
    if (origin_.measured.count == 0) return std::nullopt;
    const auto deadline = std::chrono::steady_clock::now() + std::min(most, stallTimeout_);
    std::string packed;
    while ((packed = ring_.Measurement()).empty() && !ring_.IsComplete()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return std::nullopt;
        pollfd socket{socket_.Get(), POLLIN, 0};
        ::poll(&socket, 1, static_cast<int>(left.count()));
        if ((socket.revents & (POLLHUP | POLLERR)) != 0) return UnpackMeasurement(ring_.Measurement());
        char word[64];
        ::recv(socket_.Get(), word, sizeof word, MSG_DONTWAIT);
    }
    return UnpackMeasurement(ring_.Measurement());
}

void DecodedSound::WaitForFrames(std::size_t frames) {
    AssertMixingThread();
    const auto deadline = std::chrono::steady_clock::now() + stallTimeout_;
    while (ring_.Filled() < frames && !ring_.IsFinished()) {
        ring_.AnnounceWait(frames);
        if (ring_.Filled() >= frames || ring_.IsFinished()) return;
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            stalled_.store(true);
            return GiveUp();
        }
        Begin();
        pollfd socket{socket_.Get(), POLLIN, 0};
        ::poll(&socket, 1, static_cast<int>(left.count()));
        // Looked at before the ring: what the decoder wrote before its end is there afterwards.
        const bool over = (socket.revents & (POLLHUP | POLLERR)) != 0;
        char word[64];
        constexpr int kMostWords = 64;  // one is due; a decoder that sends on and on holds nobody up
        for (int i = 0; i<kMostWords&& ::recv(socket_.Get(), word, sizeof word, MSG_DONTWAIT)> 0; ++i) {
        }
        if (over) return GiveUp();
    }
}

}  // namespace sorakaze::sound
