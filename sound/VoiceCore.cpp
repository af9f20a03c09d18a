// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/VoiceCore.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "sound/MixingThread.h"

namespace sorakaze::sound {
namespace {

constexpr std::uint32_t kShortestRamp = kSampleRate / 200;  // 5 ms
constexpr std::uint32_t kStartRamp = kSampleRate / 500;     // 2 ms
constexpr std::uint32_t kStopRamp = kShortestRamp;

float Sane(float gain) {
    return gain >= 0.0f ? std::min(gain, 1.0f) : 0.0f;  // also catches what is no number
}

std::uint32_t RampFrames(Frames ramp) {
    constexpr std::int64_t kLongest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(ramp.count, kShortestRamp, kLongest));
}

}  // namespace

VoiceCore::VoiceCore(std::unique_ptr<DecodedSound> sound, std::optional<Bus> bus)
    : length_(sound->Length()),
      bus_(bus.value_or(Bus::Effects)),
      sound_(std::move(sound)),
      ahead_(bus ? std::make_unique<Lookahead>() : nullptr),
      lead_(bus == Bus::Speech ? kUndecided : 0) {}

void VoiceCore::SetLevel(const VoiceLevel& level) {
    const std::lock_guard lock(control_);
    if (state_.load() != State::Opened) return;
    level_ = level;
    if (level.plan.end) EndAt(*level.plan.end, level.plan.endFade);
}

VoiceLevel VoiceCore::Level() const {
    const std::lock_guard lock(control_);
    return level_;
}

std::optional<Measurement> VoiceCore::AwaitMeasurement() {
    const std::lock_guard lock(control_);
    return sound_ && state_.load() == State::Opened ? sound_->AwaitMeasurement() : std::nullopt;
}

void VoiceCore::EndAt(Frames end, Frames fade) {
    const std::int64_t length = std::max<std::int64_t>(fade.count, kShortestRamp);
    endFade_.store(length);
    // A sound that is beyond it already still has its fade.
    end_.store(std::max(end.count, Position().count + length));
}

void VoiceCore::FadeOut(Frames frames) {
    fadeOut_.store(RampFrames(frames));
}

VoiceCore::Change VoiceCore::Start() {
    const std::lock_guard lock(control_);
    if (state_.load() != State::Opened) return Change::None;
    inMixing_.store(true);
    state_.store(State::Playing);
    if (sound_) sound_->Begin();
    return Change::Started;
}

VoiceCore::Change VoiceCore::Stop() {
    const std::lock_guard lock(control_);
    State expected = State::Playing;
    if (state_.compare_exchange_strong(expected, State::Stopped)) return Change::Stopped;
    if (expected == State::Opened) state_.store(State::Stopped);
    return Change::None;
}

void VoiceCore::SetGain(float gain, Frames ramp) {
    const float target = Sane(gain);
    if (state_.load() == State::Opened) {
        initialGain_.store(target);
        // If Start was called in between, the mixing thread may have read it already, so a command follows.
        if (state_.load() == State::Opened) return;
    }
    command_.store(std::uint64_t{std::bit_cast<std::uint32_t>(target)} << 32 | RampFrames(ramp));
}

void VoiceCore::ApplyCommands() {
    if (!begun_) {
        begun_ = true;
        gain_.Jump(initialGain_.load());
        edge_.MoveTo(1.0f, kStartRamp);
        if (ahead_) envelope_.Begin(level_.plan);
    }
    if (fadeOut_.load(std::memory_order_relaxed) != 0) envelope_.FadeOut(fadeOut_.exchange(0));
    if (command_.load(std::memory_order_relaxed) != kNoCommand) {
        const std::uint64_t command = command_.exchange(kNoCommand, std::memory_order_acq_rel);
        gain_.MoveTo(std::bit_cast<float>(static_cast<std::uint32_t>(command >> 32)),
                     static_cast<std::uint32_t>(command));
    }
    if (!stopping_ && state_.load(std::memory_order_acquire) == State::Stopped) {
        stopping_ = true;
        edge_.MoveTo(0.0f, edge_.Now() > 0.0f ? kStopRamp : 0);
    }
}

VoiceCore::MixResult VoiceCore::MixInto(std::span<float> sum, MixingMode mode) {
    AssertMixingThread();
    ApplyCommands();
    sum = WithoutLead(sum);
    if (sum.empty() && !stopping_) return {};
    RingReader& ring = sound_->Ring();
    if (stopping_) sum = sum.first(std::min(sum.size(), edge_.Remaining() * kChannels));
    MixResult result;
    if (mode == MixingMode::RealTime && IsShortOf(sum.size() / kChannels)) {
        result.underrun = !starving_;
        MixAroundGap(sum);
    } else {
        starving_ = false;
        starvingNow_.store(false, std::memory_order_relaxed);
        if (!MixFrames(sum, mode)) return End();
    }
    if (stopping_ && !edge_.IsMoving()) {
        result.mixing = Mixing::IsOver;
        return result;
    }
    // Offline the end must not depend on when the decoder reports it.
    if (mode == MixingMode::Offline) {
        sound_->WakeDecoder();
        if (ring.Filled() == 0) sound_->WaitForFrames();
    }
    return ring.IsDrained() ? End() : result;
}

/// What is left of `sum` after the silence that a voice may begin with.
std::span<float> VoiceCore::WithoutLead(std::span<float> sum) {
    if (lead_ <= 0 || stopping_) return sum;
    const auto silent = std::min(lead_, static_cast<std::int64_t>(sum.size() / kChannels));
    if (lead_ != kUndecided) lead_ -= silent;
    return sum.subspan(static_cast<std::size_t>(silent) * kChannels);
}

/// False at the end of the sound.
bool VoiceCore::MixFrames(std::span<float> sum, MixingMode mode) {
    RingReader& ring = sound_->Ring();
    while (!sum.empty()) {
        const auto frames = ring.Peek(std::min(sum.size() / kChannels, FramesToEnd()));
        if (!frames.empty()) {
            AddFrames(sum.first(frames.size()), frames);
            sum = sum.subspan(frames.size());
        } else if (FramesToEnd() == 0) {
            return false;
        } else if (ring.IsFinished()) {
            if (ring.IsDrained()) return false;
        } else if (mode == MixingMode::Offline) {
            sound_->WaitForFrames();
        } else {
            break;  // a corrupt ring
        }
    }
    return true;
}

/// The frames that may be read before something changes: up to where the fade before an early end begins, or
/// up to that end.
std::size_t VoiceCore::FramesToEnd() {
    const std::int64_t end = end_.load(std::memory_order_acquire);
    if (end == kNoEnd) return std::numeric_limits<std::size_t>::max();
    const std::int64_t left = end - position_.load(std::memory_order_relaxed);
    if (left <= 0) return 0;
    const std::int64_t untilFade = left - endFade_.load();
    if (untilFade > 0 && !isFadingToEnd_) return static_cast<std::size_t>(untilFade);
    if (!isFadingToEnd_) envelope_.FadeToEnd(static_cast<std::uint32_t>(left));
    isFadingToEnd_ = true;
    return static_cast<std::size_t>(left);
}

Lookahead& VoiceCore::Ahead(MixingMode mode) {
    ahead_->Follow(*sound_, Position(), mode);
    return *ahead_;
}

/// Whether a gap begins within these frames or right after them. The frames of a short ramp count too:
/// without any left, there is nothing to fade.
bool VoiceCore::IsShortOf(std::size_t frames) const {
    RingReader& ring = sound_->Ring();
    return !ring.IsFinished() && ring.Filled() < frames + kStartRamp;
}

/// Fades out before a gap and in after it.
void VoiceCore::MixAroundGap(std::span<float> sum) {
    RingReader& ring = sound_->Ring();
    std::size_t left = starving_ ? 0 : std::min(ring.Filled(), sum.size() / kChannels);
    const std::size_t fade = std::min<std::size_t>(left, kStartRamp);
    while (left > 0) {
        if (left == fade && !stopping_) edge_.MoveTo(0.0f, static_cast<std::uint32_t>(fade));
        const auto frames = ring.Peek(left > fade ? left - fade : left);
        if (frames.empty()) break;  // a corrupt ring
        AddFrames(sum.first(frames.size()), frames);
        sum = sum.subspan(frames.size());
        left -= frames.size() / kChannels;
    }
    starving_ = true;
    starvingNow_.store(true, std::memory_order_relaxed);
    gain_.Pass(sum.size() / kChannels);
    envelope_.Pass(sum.size() / kChannels);
    if (stopping_) {
        edge_.Pass(sum.size() / kChannels);
    } else {
        edge_.Jump(0.0f);
        edge_.MoveTo(1.0f, kStartRamp);
    }
}

VoiceCore::MixResult VoiceCore::End() {
    const bool isEarly = FramesToEnd() == 0;
    const bool decoderFailed = !isEarly && (!sound_->Ring().IsComplete() || sound_->Ring().IsCorrupt());
    if (decoderFailed) decoderFailed_.store(true, std::memory_order_release);
    State expected = State::Playing;
    const bool ended = state_.compare_exchange_strong(expected, State::Ended, std::memory_order_acq_rel);
    return {.mixing = Mixing::IsOver, .ended = ended, .underrun = false, .decoderFailed = decoderFailed};
}

void VoiceCore::AddFrames(std::span<float> sum, std::span<const float> frames) {
    position_.store(
        position_.load(std::memory_order_relaxed) + static_cast<std::int64_t>(frames.size() / kChannels),
        std::memory_order_release);
    const std::size_t all = frames.size() / kChannels;
    while (!sum.empty()) {
        std::size_t count = sum.size() / kChannels;
        if (gain_.IsMoving()) count = std::min(count, gain_.Remaining());
        if (edge_.IsMoving()) count = std::min(count, edge_.Remaining());
        count = std::min(count, envelope_.Remaining());
        float* const to = sum.data();
        const float* const from = frames.data();
        const std::size_t samples = count * kChannels;
        if (gain_.IsMoving() || edge_.IsMoving() || envelope_.IsMoving()) {
            const Ramp gain = gain_;
            const Ramp edge = edge_;
            for (std::uint32_t i = 0; i < count; ++i) {
                const float factor = gain.At(i + 1) * edge.At(i + 1) * envelope_.At(i + 1);
                to[2 * i] += from[2 * i] * factor;
                to[2 * i + 1] += from[2 * i + 1] * factor;
            }
            gain_.Pass(count);
            edge_.Pass(count);
        } else {
            const float factor = gain_.Target() * edge_.Target() * envelope_.Now();
            if (factor == 1.0f) {
                for (std::size_t i = 0; i < samples; ++i) to[i] += from[i];
            } else if (factor != 0.0f) {
                for (std::size_t i = 0; i < samples; ++i) to[i] += from[i] * factor;
            }
        }
        envelope_.Pass(count);
        sum = sum.subspan(samples);
        frames = frames.subspan(samples);
    }
    sound_->Ring().Consume(all);
}

bool VoiceCore::IsOver() const {
    const State state = state_.load(std::memory_order_acquire);
    return (state == State::Stopped || state == State::Ended) && !IsInMixerList();
}

void VoiceCore::FreeResources() {
    const std::lock_guard lock(control_);
    sound_.reset();
}

}  // namespace sorakaze::sound
