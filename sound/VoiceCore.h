// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One voice of the engine, seen from its three sides: the logic's threads command it, a decoder in another
// process fills its ring, the mixing thread adds it to the sum. The sides meet in atomics only; the mixing
// side takes no lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>

#include "sound/Bus.h"
#include "sound/DecodedSound.h"
#include "sound/Frames.h"
#include "sound/MixingEngine.h"
#include "sound/Ramp.h"
#include "sound/desk/Envelope.h"
#include "sound/desk/Lookahead.h"
#include "sound/desk/VoiceLevel.h"

namespace sorakaze::sound {

class VoiceCore {
  public:
    enum class Mixing {
        GoesOn,
        IsOver,  ///< the mixing thread drops the voice
    };
    enum class Change { None, Started, Stopped };

    /// The bus of a voice under a desk; without one, empty.
    VoiceCore(std::unique_ptr<DecodedSound> sound, std::optional<Bus> bus);

    // --- the logic's threads ---

    /// Under a desk. The level has an effect before Start only, an end at any time.
    void SetLevel(const VoiceLevel& level);
    VoiceLevel Level() const;
    /// Only before Start: until then nobody else reads the ring.
    std::optional<Measurement> AwaitMeasurement();
    void EndAt(Frames end, Frames fade);
    /// To silence.
    void FadeOut(Frames frames);

    /// Started if this call started the voice: then the caller passes it to the mixing thread.
    Change Start();
    /// Stopped if the voice was playing until now.
    Change Stop();
    void SetGain(float gain, Frames ramp);
    bool IsPlaying() const { return state_.load(std::memory_order_acquire) == State::Playing; }
    Frames Position() const { return {position_.load(std::memory_order_acquire)}; }
    std::optional<Frames> Length() const { return length_; }

    // --- the mixing thread ---

    struct MixResult {
        Mixing mixing = Mixing::GoesOn;
        bool ended = false;          ///< the file's last frame was mixed now, in a voice that was playing
        bool underrun = false;       ///< the ring has run short of frames, for the first time in this gap
        bool decoderFailed = false;  ///< the decoder ended before the sound did
    };
    /// Adds the next frames to `sum`.
    MixResult MixInto(std::span<float> sum, MixingMode mode);
    /// Takes what the logic has ordered since the last call; MixInto does it too.
    void ApplyCommands();
    Bus GetBus() const { return bus_; }
    /// Its next second or so, brought up to date.
    Lookahead& Ahead(MixingMode mode);
    /// The desk's level of it, set before it was started.
    const VoiceLevel& LevelInMix() const { return level_; }
    /// The factor of the next frame: volume, level and fades.
    float FactorNow() const { return gain_.Now() * envelope_.Now(); }
    /// Whether it is among the voices that sound, or are about to.
    bool IsHeard() const { return !stopping_; }
    /// Speech waits for the desk when it comes: IsAwaitingDesk is true until LeadIn gives the frames of
    /// silence that it begins with.
    bool IsAwaitingDesk() const { return lead_ == kUndecided; }
    void LeadIn(Frames silence) { lead_ = silence.count; }
    Frames Lead() const { return {lead_}; }

    /// The mixing thread doesn't use the voice any more.
    void LeaveMixing() { inMixing_.store(false, std::memory_order_release); }
    VoiceCore* next = nullptr;  ///< in the list of new voices, and then in the mixing thread's own

    // --- the voice monitor's thread (see VoiceMonitor) ---

    bool IsInMixerList() const { return inMixing_.load(std::memory_order_acquire); }
    /// True when no frame will be read any more: the resources can be freed.
    bool IsOver() const;
    /// The decoder's end of the sound; until FreeResources.
    DecodedSound& Sound() { return *sound_; }
    /// The mixing thread has come to the end of a sound that its decoder didn't finish.
    bool DecoderFailed() const { return decoderFailed_.load(std::memory_order_acquire); }
    /// On a device: frames are missing.
    bool IsStarving() const { return starvingNow_.load(std::memory_order_relaxed); }
    /// Frees the sound; only after IsOver. Callers may hold on to the voice for hours.
    void FreeResources();

  private:
    enum class State { Opened, Playing, Stopped, Ended };

    bool IsShortOf(std::size_t frames) const;
    void MixAroundGap(std::span<float> sum);
    std::span<float> WithoutLead(std::span<float> sum);
    bool MixFrames(std::span<float> sum, MixingMode mode);
    std::size_t FramesToEnd();
    void AddFrames(std::span<float> sum, std::span<const float> frames);
    MixResult End();

    mutable std::mutex control_;  // Start against Stop and FreeResources, never the mixing thread
    std::atomic<State> state_{State::Opened};  // logic and mixing thread
    std::atomic<bool> inMixing_{false};        // set by Start, cleared by the mixing thread
    std::atomic<float> initialGain_{1.0f};     // written by logic before Start, read when mixing begins
    std::atomic<std::uint64_t> command_{
        kNoCommand};                          // latest SetGain; written by logic, taken by the mixing thread
    std::atomic<std::uint32_t> fadeOut_{0};   // frames; written by logic, taken by the mixing thread
    std::atomic<std::int64_t> end_{kNoEnd};   // frames; written by logic
    std::atomic<std::int64_t> endFade_{0};    // frames; written by logic before end_
    std::atomic<std::int64_t> position_{0};   // written by the mixing thread
    std::atomic<bool> starvingNow_{false};    // written by the mixing thread
    std::atomic<bool> decoderFailed_{false};  // set by the mixing thread
    const std::optional<Frames> length_;

    const Bus bus_;
    VoiceLevel level_;                        // written by logic before Start, guarded by control_
    std::unique_ptr<DecodedSound> sound_;     // its ring is the mixing thread's
    const std::unique_ptr<Lookahead> ahead_;  // the mixing thread's; empty without a desk

    // The mixing thread's own.
    Ramp gain_{1.0f};
    Ramp edge_{0.0f};  ///< the ramps at the voice's start, at its stop and around gaps
    Envelope envelope_;
    std::int64_t lead_ = 0;  ///< frames of silence before the first one
    bool begun_ = false;
    bool isFadingToEnd_ = false;
    bool stopping_ = false;
    bool starving_ = false;

    static constexpr std::uint64_t kNoCommand = ~std::uint64_t{0};
    static constexpr std::int64_t kNoEnd = std::numeric_limits<std::int64_t>::max();
    static constexpr std::int64_t kUndecided = kNoEnd;
};

}  // namespace sorakaze::sound
