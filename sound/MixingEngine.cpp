// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/MixingEngine.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "sound/Limiter.h"
#include "sound/MixingThread.h"
#include "sound/VoiceCore.h"
#include "sound/VoiceMonitor.h"

namespace sorakaze::sound {
namespace {

/// What outlives the engine as long as somebody holds one of its voices.
struct Shared {
    Shared(MixingMode mixingMode, std::shared_ptr<Decoders> processes)
        : mode(mixingMode),
          decoders(std::move(processes)),
          monitor(
              mode, decoders, [this] { sounding.fetch_sub(1); }, [this] { Failed(); }) {}

    /// Not the mixing thread.
    void Failed() {
        failures.store(true);
        const std::lock_guard lock(mutex);
        if (tellFailure) tellFailure();
    }

    void Started(VoiceCore& voice) {
        sounding.fetch_add(1);
        voice.next = incoming.load();
        while (!incoming.compare_exchange_weak(voice.next, &voice)) {
        }
        monitor.Wake();
    }

    void Stopped() {
        sounding.fetch_sub(1);
        monitor.Wake();
    }

    const MixingMode mode;
    const std::shared_ptr<Decoders> decoders;
    std::atomic<VoiceCore*> incoming{nullptr};  // pushed by logic, taken as a whole by the mixing thread
    std::atomic<int> sounding{0};
    std::atomic<std::int64_t> mixed{0};       // written by the mixing thread
    std::atomic<std::uint64_t> underruns{0};  // written by the mixing thread
    std::atomic<bool> closed{false};
    std::atomic<bool> failures{false};  // there may be some; set by any thread
    std::mutex mutex;
    std::function<void()> tellFailure;  // guarded by mutex
    VoiceMonitor monitor;
};

/// What Open returns. The core lives until the mixing thread and the monitor don't use it any more.
class EngineVoice final : public Voice {
  public:
    EngineVoice(std::shared_ptr<Shared> shared, std::shared_ptr<VoiceCore> core)
        : shared_(std::move(shared)), core_(std::move(core)) {}
    ~EngineVoice() override { EngineVoice::Stop(); }

    void Start() override {
        AssertNotMixingThread();
        if (shared_->closed.load()) return;
        if (core_->Start() == VoiceCore::Change::Started) shared_->Started(*core_);
    }
    void Stop() override {
        AssertNotMixingThread();
        if (core_->Stop() == VoiceCore::Change::Stopped)
            shared_->Stopped();
        else
            shared_->monitor.Wake();
    }
    bool IsPlaying() const override { return core_->IsPlaying(); }
    void SetGain(float gain, Frames ramp) override {
        AssertNotMixingThread();
        core_->SetGain(gain, ramp);
    }
    Frames Position() const override { return core_->Position(); }
    std::optional<Frames> Length() const override { return core_->Length(); }

  private:
    std::shared_ptr<Shared> shared_;
    std::shared_ptr<VoiceCore> core_;
};

}  // namespace

struct MixingEngine::Impl {
    Impl(MixingMode mode, std::shared_ptr<Decoders> decoders)
        : shared(std::make_shared<Shared>(mode, std::move(decoders))) {}

    void TakeIncoming();
    void MixBlock(std::span<float> out);

    std::shared_ptr<Shared> shared;

    // The mixing thread's own.
    VoiceCore* first = nullptr;  ///< in the order of their starts, so that sums are reproducible
    Limiter limiter;

    std::atomic_flag mixing;  ///< for MixingScope
};

MixingEngine::MixingEngine(MixingMode mode, std::shared_ptr<Decoders> decoders)
    : impl_(std::make_unique<Impl>(mode, decoders ? std::move(decoders) : Decoders::Shared())) {}

MixingEngine::~MixingEngine() {
    AssertNotMixingThread();
    impl_->shared->closed.store(true);
    impl_->shared->monitor.Close();
}

std::shared_ptr<Voice> MixingEngine::Open(const std::filesystem::path& file) {
    AssertNotMixingThread();
    Shared& shared = *impl_->shared;
    auto sound = shared.decoders->Open(
        file, shared.mode == MixingMode::Offline ? Decoders::Pace::Fast : Decoders::Pace::Device);
    if (!sound) {
        shared.Failed();
        return nullptr;
    }
    auto core = std::make_shared<VoiceCore>(std::move(sound));
    shared.monitor.Add(core);
    return std::make_shared<EngineVoice>(impl_->shared, std::move(core));
}

std::optional<std::string> MixingEngine::ReadTags(const std::filesystem::path& file) {
    AssertNotMixingThread();
    auto tags = impl_->shared->decoders->ReadTags(file);
    if (!tags) impl_->shared->Failed();
    return tags;
}

std::vector<DecoderFailure> MixingEngine::TakeFailures() {
    AssertNotMixingThread();
    if (!impl_->shared->failures.exchange(false)) return {};
    impl_->shared->monitor.RecordFailures();
    return impl_->shared->decoders->TakeFailures();
}

void MixingEngine::OnFailure(std::function<void()> tell) {
    AssertNotMixingThread();
    const std::lock_guard lock(impl_->shared->mutex);
    impl_->shared->tellFailure = std::move(tell);
}

void MixingEngine::Cancel() {
    impl_->shared->decoders->Cancel();
}

void MixingEngine::ForgetBadFiles() {
    impl_->shared->decoders->ForgetBadFiles();
}

void MixingEngine::Mix(std::span<float> interleaved) {
    const MixingScope scope(impl_->mixing);
    auto rest = interleaved.first(interleaved.size() / kChannels * kChannels);
    const auto frames = static_cast<std::int64_t>(rest.size() / kChannels);
    impl_->TakeIncoming();
    if (!impl_->first && impl_->limiter.IsSilent()) {
        std::fill(rest.begin(), rest.end(), 0.0f);
    } else {
        while (!rest.empty()) {
            const auto block = rest.first(std::min<std::size_t>(rest.size(), Limiter::kMaxBlock * kChannels));
            impl_->MixBlock(block);
            rest = rest.subspan(block.size());
        }
    }
    auto& mixed = impl_->shared->mixed;
    mixed.store(mixed.load(std::memory_order_relaxed) + frames, std::memory_order_release);
}

/// Appends the voices that were started since the last call to the mixing thread's list, first come first.
void MixingEngine::Impl::TakeIncoming() {
    if (!shared->incoming.load(std::memory_order_relaxed)) return;
    VoiceCore* reversed = shared->incoming.exchange(nullptr);
    VoiceCore* ordered = nullptr;
    while (reversed) {
        VoiceCore* const next = reversed->next;
        reversed->next = ordered;
        ordered = reversed;
        reversed = next;
    }
    VoiceCore** end = &first;
    while (*end) end = &(*end)->next;
    *end = ordered;
}

void MixingEngine::Impl::MixBlock(std::span<float> out) {
    const auto sum = limiter.Input(out.size() / kChannels);
    for (VoiceCore** link = &first; *link;) {
        VoiceCore& voice = **link;
        const auto result = voice.MixInto(sum, shared->mode);
        if (result.ended) shared->sounding.fetch_sub(1);
        if (result.decoderFailed) shared->failures.store(true);
        if (result.underrun) shared->underruns.fetch_add(1, std::memory_order_relaxed);
        if (result.mixing == VoiceCore::Mixing::GoesOn) {
            link = &voice.next;
            continue;
        }
        *link = voice.next;
        voice.LeaveMixing();  // from here on the voice may be gone
        // A device's thread must not wake anybody: the monitor checks regularly.
        if (shared->mode == MixingMode::Offline) shared->monitor.Wake();
    }
    limiter.Process(out);
}

Frames MixingEngine::Mixed() const {
    return {impl_->shared->mixed.load(std::memory_order_acquire)};
}

Frames MixingEngine::Latency() const {
    return {Limiter::kLatency};
}

int MixingEngine::Sounding() const {
    // Below zero for an instant when one thread stops a voice that another is just starting.
    return std::max(0, impl_->shared->sounding.load());
}

std::uint64_t MixingEngine::Underruns() const {
    return impl_->shared->underruns.load();
}

}  // namespace sorakaze::sound
