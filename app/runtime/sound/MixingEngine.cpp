// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/sound/MixingEngine.h"

#include <algorithm>
#include <atomic>

#include "app/runtime/sound/Limiter.h"
#include "app/runtime/sound/ReadAhead.h"
#include "app/runtime/sound/VoiceCore.h"

namespace sorakaze::sound {
namespace {

/// What outlives the engine as long as somebody holds one of its voices.
struct Shared {
    explicit Shared(Reading mode) : reading(mode), readAhead(mode) {}

    void Started(VoiceCore& voice) {
        sounding.fetch_add(1);
        voice.next = incoming.load();
        while (!incoming.compare_exchange_weak(voice.next, &voice)) {
        }
        readAhead.Nudge();
    }

    void Ceased() {
        sounding.fetch_sub(1);
        readAhead.Nudge();
    }

    const Reading reading;
    std::atomic<VoiceCore*> incoming{nullptr};  // pushed by logic, taken as a whole by the mixing thread
    std::atomic<int> sounding{0};
    std::atomic<std::int64_t> mixed{0};       // written by the mixing thread
    std::atomic<std::uint64_t> underruns{0};  // written by the mixing thread
    std::atomic<bool> closed{false};
    ReadAhead readAhead;
};

/// What Open hands out. The core itself lives on until the mixing thread and the workers have let go of it.
class EngineVoice final : public Voice {
  public:
    EngineVoice(std::shared_ptr<Shared> shared, std::shared_ptr<VoiceCore> core)
        : shared_(std::move(shared)), core_(std::move(core)) {}
    ~EngineVoice() override { EngineVoice::Stop(); }

    void Start() override {
        if (shared_->closed.load()) return;
        if (core_->Start() == VoiceCore::Change::Began) shared_->Started(*core_);
    }
    void Stop() override {
        if (core_->Stop() == VoiceCore::Change::Ceased)
            shared_->Ceased();
        else
            shared_->readAhead.Nudge();
    }
    bool IsPlaying() const override { return core_->IsPlaying(); }
    void SetGain(float gain, Frames ramp) override { core_->SetGain(gain, ramp); }
    Frames Position() const override { return core_->Position(); }
    std::optional<Frames> Length() const override { return core_->Length(); }

  private:
    std::shared_ptr<Shared> shared_;
    std::shared_ptr<VoiceCore> core_;
};

}  // namespace

struct MixingEngine::Impl {
    explicit Impl(Reading reading) : shared(std::make_shared<Shared>(reading)) {}

    void TakeIncoming();
    void MixBlock(std::span<float> out);

    std::shared_ptr<Shared> shared;

    // The mixing thread's own.
    VoiceCore* first = nullptr;  ///< in the order of their starts, so that sums are reproducible
    Limiter limiter;
};

MixingEngine::MixingEngine(Reading reading) : impl_(std::make_unique<Impl>(reading)) {}

MixingEngine::~MixingEngine() {
    impl_->shared->closed.store(true);
    impl_->shared->readAhead.Close();
}

std::shared_ptr<Voice> MixingEngine::Open(const std::filesystem::path& file) {
    auto decoder = Decoder::Open(
        file, impl_->shared->reading == Reading::Offline ? Decoder::Speed::Highest : Decoder::Speed::Modest);
    if (!decoder) return nullptr;
    auto core = std::make_shared<VoiceCore>(std::move(decoder));
    impl_->shared->readAhead.Add(core);
    return std::make_shared<EngineVoice>(impl_->shared, std::move(core));
}

void MixingEngine::Mix(std::span<float> interleaved) {
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
        const auto result = voice.MixInto(sum, shared->reading);
        if (result.ended) shared->sounding.fetch_sub(1);
        if (result.underrun) shared->underruns.fetch_add(1, std::memory_order_relaxed);
        const bool over = result.mixing == VoiceCore::Mixing::IsOver;
        bool tell = over;
        if (over) {
            *link = voice.next;
            voice.LeaveMixing();  // from here on the voice may be gone
        } else {
            tell = shared->reading == Reading::Offline && voice.AsksForFrames();
            link = &voice.next;
        }
        // A device's thread tells nobody: the workers look by themselves.
        if (tell && shared->reading == Reading::Offline) shared->readAhead.Nudge();
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
