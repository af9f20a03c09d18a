// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/MixingEngine.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "sound/Limiter.h"
#include "sound/MixingThread.h"
#include "sound/SoundCounter.h"
#include "sound/VoiceCore.h"
#include "sound/VoiceMonitor.h"
#include "sound/desk/Desk.h"
#include "sound/desk/Levels.h"
#include "sound/desk/OutputStage.h"

namespace sorakaze::sound {
namespace {

/// What outlives the engine as long as somebody holds one of its voices.
struct Shared {
    Shared(MixingMode mixingMode, std::shared_ptr<Decoders> processes)
        : mode(mixingMode),
          decoders(std::move(processes)),
          monitor(
              mode, decoders, [this] { sounding.fetch_sub(1); }, [this] { Failed(); }) {
        if (mode == MixingMode::Counting) counter = std::make_unique<SoundCounter>(decoders, std::nullopt);
    }

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
    std::unique_ptr<Desk> desk;                 // made before the first voice; empty: there is none
    std::unique_ptr<Levels> levels;             // with the desk
    std::unique_ptr<SoundCounter> counter;      // in MixingMode::Counting
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
    void FadeOut(Frames frames) override {
        AssertNotMixingThread();
        if (shared_->desk)
            core_->FadeOut(frames);
        else
            core_->SetGain(0.0f, frames);
    }
    std::optional<VoiceLevel> Level() const override {
        return shared_->desk ? std::optional(core_->Level()) : std::nullopt;
    }
    void SetLevel(const VoiceLevel& level) override {
        AssertNotMixingThread();
        core_->SetLevel(level);
    }
    std::optional<Measurement> AwaitMeasurement() override {
        AssertNotMixingThread();
        return core_->AwaitMeasurement();
    }
    void EndAt(Frames end, Frames fade) override {
        AssertNotMixingThread();
        core_->EndAt(end, fade);
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
    bool IsSilent() const;
    void MixBlock(std::span<float> out);
    void MixStep(std::span<float> out, Frames now);
    enum class Part { All, Bed, Speech };
    void MixVoices(Part part, std::span<float> sum);

    std::shared_ptr<Shared> shared;

    // The mixing thread's own.
    VoiceCore* first = nullptr;  ///< in the order of their starts, so that sums are reproducible
    Limiter limiter;             ///< without a desk
    OutputStage outputStage;     ///< under a desk

    OutputTaps taps;
    std::atomic_flag mixing;  ///< for MixingScope
};

MixingEngine::MixingEngine(MixingMode mode, std::shared_ptr<Decoders> decoders)
    : impl_(std::make_unique<Impl>(mode, decoders ? std::move(decoders) : Decoders::Shared())) {}

MixingEngine::~MixingEngine() {
    AssertNotMixingThread();
    impl_->shared->closed.store(true);
    impl_->shared->monitor.Close();
}

void MixingEngine::UseDesk(double target) {
    AssertNotMixingThread();
    Shared& shared = *impl_->shared;
    shared.desk = std::make_unique<Desk>(target, shared.mode);
    shared.levels = std::make_unique<Levels>(target, shared.decoders, shared.mode);
    if (shared.counter) shared.counter = std::make_unique<SoundCounter>(shared.decoders, target);
}

bool MixingEngine::HasDesk() const {
    return impl_->shared->desk != nullptr;
}

std::shared_ptr<Voice> MixingEngine::Open(const SoundSource& source, Bus bus, Frames part, std::string* why) {
    AssertNotMixingThread();
    Shared& shared = *impl_->shared;
    if (shared.counter) {
        auto voice = shared.counter->Open(source, bus, part, why);
        if (!voice && !why) shared.Failed();
        return voice;
    }
    const bool hasDesk = HasDesk();
    const auto pace = shared.mode == MixingMode::Offline ? Decoders::Pace::Fast : Decoders::Pace::Device;
    DecodeOptions options = hasDesk ? OptionsFor(bus) : DecodeOptions();
    options.excerpt = source.excerpt;
    auto sound = shared.decoders->Open(source.file, pace, options,
                                       hasDesk ? shared.levels->MeasuredInRing(bus, part) : Frames(), why);
    if (!sound) {
        if (!why) shared.Failed();
        return nullptr;
    }
    const auto level = hasDesk && bus != Bus::Music
                           ? shared.levels->LevelOfShortSound(source.file, *sound, bus)
                           : VoiceLevel();
    auto core = std::make_shared<VoiceCore>(std::move(sound), hasDesk ? std::optional(bus) : std::nullopt);
    core->SetLevel(level);
    shared.monitor.Add(core);
    return std::make_shared<EngineVoice>(impl_->shared, std::move(core));
}

void MixingEngine::WantLevel(const SoundSource& source, Frames part) {
    AssertNotMixingThread();
    if (HasDesk() && !impl_->shared->counter) impl_->shared->levels->Want(source, part);
}

VoiceLevel MixingEngine::LevelOfMusic(const SoundSource& source, Frames part, std::optional<double> tagged,
                                      Voice* opened) {
    AssertNotMixingThread();
    if (!HasDesk() || impl_->shared->counter) return {};
    const auto measured = opened ? opened->AwaitMeasurement() : std::nullopt;
    return impl_->shared->levels->LevelOfMusic(source, part, tagged, measured);
}

void MixingEngine::ExpectSpeech() {
    AssertNotMixingThread();
    if (HasDesk()) impl_->shared->desk->ExpectSpeech(Mixed());
}

void MixingEngine::SetOutsideSpeech(bool speaks) {
    AssertNotMixingThread();
    if (HasDesk()) impl_->shared->desk->SetOutsideSpeech(speaks);
}

std::vector<double> MixingEngine::TakeDucks() {
    AssertNotMixingThread();
    return HasDesk() ? impl_->shared->desk->TakeDucks() : std::vector<double>();
}

std::optional<std::string> MixingEngine::ReadTags(const std::filesystem::path& file, std::string* why) {
    AssertNotMixingThread();
    auto& counter = impl_->shared->counter;
    auto tags = counter ? counter->ReadTags(file, why) : impl_->shared->decoders->ReadTags(file, why);
    if (!tags && !why) impl_->shared->Failed();
    return tags;
}

std::vector<DecoderFailure> MixingEngine::TakeFailures() {
    AssertNotMixingThread();
    // Asked in each tick: a load costs less than an exchange.
    if (!impl_->shared->failures || !impl_->shared->failures.exchange(false)) return {};
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
    MixNext(interleaved);
    // Where frames are only counted, there is nothing to hear.
    if (!impl_->shared->counter) impl_->taps.Tell(interleaved);
}

bool MixingEngine::AddTap(OutputTap& tap) {
    AssertNotMixingThread();
    return impl_->taps.Add(tap);
}

void MixingEngine::RemoveTap(OutputTap& tap) {
    AssertNotMixingThread();
    impl_->taps.Remove(tap);
}

void MixingEngine::MixNext(std::span<float> interleaved) {
    const MixingScope scope(impl_->mixing);
    auto rest = interleaved.first(interleaved.size() / kChannels * kChannels);
    const auto frames = static_cast<std::int64_t>(rest.size() / kChannels);
    impl_->TakeIncoming();
    if (impl_->shared->counter) {
        impl_->shared->counter->Pass({frames});
    } else if (impl_->IsSilent()) {
        std::fill(rest.begin(), rest.end(), 0.0f);
        impl_->outputStage.Rest();
    } else {
        for (std::int64_t done = 0; done < frames;) {
            const Frames now = Mixed() + Frames{done};
            const auto most = HasDesk() ? kDeskStep - now.count % kDeskStep : Limiter::kMaxBlock;
            const auto block =
                rest.first(static_cast<std::size_t>(std::min(frames - done, most)) * kChannels);
            if (HasDesk())
                impl_->MixStep(block, now);
            else
                impl_->MixBlock(block);
            rest = rest.subspan(block.size());
            done += static_cast<std::int64_t>(block.size() / kChannels);
        }
    }
    auto& mixed = impl_->shared->mixed;
    mixed.store(mixed.load(std::memory_order_relaxed) + frames, std::memory_order_release);
}

bool MixingEngine::Impl::IsSilent() const {
    if (first) return false;
    return shared->desk ? outputStage.IsSilent() && shared->desk->IsIdle() : limiter.IsSilent();
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
    MixVoices(Part::All, limiter.Input(out.size() / kChannels));
    limiter.Process(out);
}

/// At most the rest of a step of the desk.
void MixingEngine::Impl::MixStep(std::span<float> out, Frames now) {
    Desk& desk = *shared->desk;
    if (now.count % kDeskStep == 0) desk.Step(first, now);
    const auto sum = outputStage.Input(out.size() / kChannels);
    MixVoices(Part::Bed, sum);
    desk.Lower(sum);
    MixVoices(Part::Speech, sum);
    outputStage.Process(out);
}

void MixingEngine::Impl::MixVoices(Part part, std::span<float> sum) {
    for (VoiceCore** link = &first; *link;) {
        VoiceCore& voice = **link;
        const bool isSpeech = voice.GetBus() == Bus::Speech;
        if (part != Part::All && isSpeech != (part == Part::Speech)) {
            link = &voice.next;
            continue;
        }
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
}

Frames MixingEngine::Mixed() const {
    return {impl_->shared->mixed.load(std::memory_order_acquire)};
}

Frames MixingEngine::Latency() const {
    return {HasDesk() ? OutputStage::kLatency : Limiter::kLatency};
}

int MixingEngine::Sounding() const {
    if (impl_->shared->counter) return impl_->shared->counter->Sounding();
    // Below zero for an instant when one thread stops a voice that another is just starting.
    return std::max(0, impl_->shared->sounding.load());
}

std::uint64_t MixingEngine::Underruns() const {
    return impl_->shared->underruns.load();
}

}  // namespace sorakaze::sound
