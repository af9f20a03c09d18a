// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A decoder that a file has taken over, at the other end of a voice's ring and socket: it moves the indices
// anywhere, writes any samples, says that it is done and takes it back, sends packets and hangs up. Each byte
// of the input says what comes next.
#include <sys/resource.h>
#include <sys/socket.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "sound/MixingThread.h"
#include "sound/VoiceCore.h"

using namespace sorakaze;
using namespace sorakaze::sound;

namespace {

class Input {
  public:
    Input(const unsigned char* data, std::size_t size) : data_(data), size_(size) {}
    bool IsOver() const { return size_ == 0; }
    template <typename Number>
    Number Take() {
        Number number{};
        const std::size_t count = std::min(size_, sizeof number);
        std::memcpy(&number, data_, count);
        data_ += count;
        size_ -= count;
        return number;
    }

  private:
    const unsigned char* data_;
    std::size_t size_;
};

void Check(bool holds) {
    if (!holds) std::abort();
}

class HostileSound {
  public:
    explicit HostileSound(Input& input) : input_(input) {
        const auto kind = input.Take<unsigned char>();
        mode_ = MixingMode(kind & 1);
        hasDesk_ = (kind & 2) != 0;
        int ends[2];
        Check(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0);
        theirs_ = FileDescriptor(ends[1]);
        auto memory = std::make_unique<SharedMemory>();
        memory_ = memory->Address();
        capacity_ = memory->Capacity();
        constexpr std::chrono::milliseconds kStandstill{1};
        voice_ = std::make_unique<VoiceCore>(
            std::make_unique<DecodedSound>(DecodedSound::Origin{}, std::move(memory), FileDescriptor(ends[0]),
                                           std::nullopt, kStandstill),
            hasDesk_ ? std::optional(kind & 4 ? Bus::Speech : Bus::Music) : std::nullopt);
        voice_->Start();
    }

    /// False when the voice is over.
    bool Step() {
        RingHeader& header = *static_cast<RingHeader*>(memory_);
        const unsigned what = input_.Take<unsigned char>() % 16;
        if (what == 0) header.written.store(input_.Take<std::uint64_t>());
        if (what == 1) header.written.fetch_sub(input_.Take<std::uint16_t>());
        if (what == 2) header.finished.store(input_.Take<unsigned char>() & 1);
        if (what == 3) header.sleeping.store(input_.Take<std::uint32_t>());
        if (what == 4) header.waiting.store(input_.Take<std::uint32_t>());
        if (what == 5) header.read.store(input_.Take<std::uint64_t>());
        if (what == 6) Fill();
        if (what == 7) SendPackets();
        if (what == 8) theirs_ = {};
        if (what == 9) voice_->SetGain(input_.Take<float>(), {input_.Take<std::int32_t>()});
        if (what == 10 && input_.Take<unsigned char>() % 8 == 0) voice_->Stop();
        if (what == 11 || what == 12) header.written.fetch_add(input_.Take<std::uint16_t>());
        return what < 13 || Mix();
    }

  private:
    /// Any bits as samples.
    void Fill() {
        float* const samples = reinterpret_cast<float*>(static_cast<char*>(memory_) + kRingSamplesOffset);
        const std::size_t begin = input_.Take<std::uint32_t>() % (capacity_ * kChannels);
        const std::size_t end =
            std::min<std::size_t>(begin + input_.Take<std::uint16_t>(), capacity_ * kChannels);
        std::fill(samples + begin, samples + end, input_.Take<float>());
    }

    /// As the desk does.
    void LookAhead() {
        const Lookahead& ahead = voice_->Ahead(mode_);
        Check(ahead.Steps() >= 0 && ahead.Steps() <= Lookahead::kSteps);
        for (int step = 0; step < ahead.Steps(); ++step)
            Check(ahead.Power(step) >= 0 && std::isfinite(ahead.Power(step)));
        if (voice_->IsAwaitingDesk()) voice_->LeadIn({input_.Take<std::uint16_t>()});
    }

    void SendPackets() {
        const std::array<char, 300> packet{};
        const std::size_t size = input_.Take<unsigned char>();
        for (int count = input_.Take<unsigned char>(); count > 0 && theirs_; --count)
            ::send(theirs_.Get(), packet.data(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
    }

    bool Mix() {
        std::array<float, 2048 * kChannels> sum{};
        const std::size_t frames = 1 + input_.Take<std::uint16_t>() % 2048;
        // As the voice monitor does.
        if (voice_->Sound().HasHungUp()) voice_->Sound().GiveUp();
        const std::int64_t before = voice_->Position().count;
        const MixingScope scope(mixing_);
        if (hasDesk_) LookAhead();
        const auto result = voice_->MixInto(std::span(sum).first(frames * kChannels), mode_);
        const std::int64_t moved = voice_->Position().count - before;
        Check(moved >= 0 && moved <= static_cast<std::int64_t>(frames));
        constexpr float kSaneSample = 64.0f;
        for (const float sample : sum) Check(std::fabs(sample) <= kSaneSample);
        for (std::size_t i = frames * kChannels; i < sum.size(); ++i) Check(sum[i] == 0.0f);
        if (result.mixing == VoiceCore::Mixing::GoesOn) return true;
        Check(!voice_->IsPlaying());
        voice_->LeaveMixing();
        Check(voice_->IsOver());
        return false;
    }

    Input& input_;
    MixingMode mode_ = MixingMode::RealTime;
    bool hasDesk_ = false;
    FileDescriptor theirs_;
    void* memory_;
    std::uint32_t capacity_;
    std::unique_ptr<VoiceCore> voice_;
    std::atomic_flag mixing_;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The smaller ring, where indices come around sooner.
    const rlimit small{1 << 20, RLIM_INFINITY};
    return ::setrlimit(RLIMIT_FSIZE, &small);
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Input input(data, size);
    HostileSound sound(input);
    while (!input.IsOver() && sound.Step()) {
    }
    return 0;
}
