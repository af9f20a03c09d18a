// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The mixing thread's desk: lets sentences begin when the bed (music and effects) is down, and lowers the bed
// under them by what each needs. Other threads tell it of speech that it doesn't mix. Takes no lock and
// allocates nothing while mixing.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

#include "sound/Frames.h"
#include "sound/Measurement.h"
#include "sound/MixingEngine.h"
#include "sound/Ramp.h"
#include "sound/VoiceCore.h"
#include "sound/desk/Ducker.h"

namespace sorakaze::sound {

class Desk {
  public:
    /// `target` in LUFS: speech that isn't mixed here counts as that loud.
    Desk(double target, MixingMode mode) : target_(target), mode_(mode) {}

    /// From where speech of this power in its band, in dBFS, is looked ahead to its first word. kNever: none.
    static int StepsToWord(const Lookahead& ahead, double band);
    /// Of speech that was measured, and is played without a gain.
    static double SpeechBandOf(const Measurement& measured, double target);

    // --- any thread but the mixing one ---

    /// A sentence is being prepared: the bed stays down for it for up to 1.5 seconds of sound.
    void ExpectSpeech(Frames now);
    /// Whether somebody else speaks, beside what is mixed here.
    void SetOutsideSpeech(bool speaks) { isOutsideSpeech_.store(speaks); }
    /// The depths in dB that were decided on since the last call. One thread at a time.
    std::vector<double> TakeDucks();

    // --- the mixing thread ---

    /// Before each kDeskStep frames: `first` is the list of voices, `now` the first of the frames.
    void Step(VoiceCore* first, Frames now);
    /// The bed of at most the rest of a step.
    void Lower(std::span<float> bed);
    /// True when no frame would be changed.
    bool IsIdle() const { return ducker_.IsIdle() && !duck_.IsMoving(); }

  private:
    /// The speech that is heard or about to be.
    struct Speech {
        int stepsToWord = Ducker::kNever;
        double power = 0;              ///< of the weakest, in the band of speech
        VoiceCore* arrived = nullptr;  ///< the first that waits to begin
        bool isThere = false;
    };
    static bool HasBed(const VoiceCore* first);
    Speech SpeechOf(VoiceCore* first);
    void AddSpeech(VoiceCore& voice, Speech& speech);
    double PowerOfBed(VoiceCore* first) const;
    void Note(double depth);

    const double target_;
    const MixingMode mode_;
    std::atomic<bool> isOutsideSpeech_{false};     // written by other threads
    std::atomic<std::int64_t> expectedUntil_{-1};  // frames; written by other threads

    Ducker ducker_;
    Ramp duck_{1.0f};
    bool hadBed_ = false;

    // A ring of depths, from the mixing thread to the one that takes them.
    std::array<double, 64> depths_{};
    std::atomic<std::uint32_t> written_{0};
    std::atomic<std::uint32_t> taken_{0};
};

}  // namespace sorakaze::sound
