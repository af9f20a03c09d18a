// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Decides how far the bed (music and effects) goes down under speech: as a presenter's hand would, in time
// before the first word, held through short pauses, and up again after the last word. Knows no sound, only
// what lies ahead. Steps of fixed length, so that the result doesn't depend on how sound is cut into blocks.
// Used by the mixing thread alone.
#pragma once

#include <limits>
#include <optional>

#include "sound/Frames.h"

namespace sorakaze::sound {

/// Everything is decided once in so many frames, on a grid from the engine's first frame on.
inline constexpr int kDeskStep = kSampleRate / 120;
constexpr int StepsFromSeconds(double seconds) {
    return static_cast<int>(seconds * kSampleRate / kDeskStep + 0.5);
}

class Ducker {
  public:
    static constexpr int kNever = std::numeric_limits<int>::max();
    static constexpr int kAttack = StepsFromSeconds(0.3);
    /// After the last word.
    static constexpr int kHold = StepsFromSeconds(0.2);
    static constexpr int kRelease = StepsFromSeconds(0.9);
    /// A shorter pause between two words is held through.
    static constexpr int kLongestPause = StepsFromSeconds(1.5);

    /// What lies ahead at a step.
    struct View {
        int stepsToWord = kNever;       ///< 0: there is speech now. kNever: none as far as one can see
        double need = 0;                ///< dB by which the bed has to go down for the words to be understood
        bool isSpeechExpected = false;  ///< a sentence is being prepared
        bool isBedThere = false;        ///< music or an effect plays, however quiet
        bool isBedNew = false;          ///< the bed is only beginning: it needs no ramp
    };

    /// The steps for which a voice that has just come waits, given those to its first word: until the bed can
    /// be down. By what plays, not by how loud it is: so a rehearsal, which decodes no music, has the same
    /// times.
    static int LeadIn(const View& view);

    /// One step. Returns the depth at its end, in dB, 0 or more.
    double Step(const View& view);

    double Depth() const { return depth_; }
    bool IsIdle() const { return depth_ == 0 && target_ == 0; }

    /// The depth that the bed goes to from now on, if that was decided in the last step.
    std::optional<double> TakeChange();

  private:
    void Approach(int stepsToWord);

    double depth_ = 0;
    double target_ = 0;
    double told_ = 0;         ///< the target that TakeChange gave last
    double releaseRate_ = 0;  ///< dB a step
    int sinceWord_ = kLongestPause;
};

}  // namespace sorakaze::sound
