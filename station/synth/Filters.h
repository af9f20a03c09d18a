// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "station/synth/Sound.h"

namespace sorakaze::station {

/// One pole, 6 dB an octave.
class OnePole {
  public:
    explicit OnePole(double cutoffHertz) { SetCutoff(cutoffHertz); }
    void SetCutoff(double hertz);
    float Low(float sample) { return state_ += factor_ * (sample - state_); }
    float High(float sample) { return sample - Low(sample); }

  private:
    float factor_ = 1;
    float state_ = 0;
};

/// Two poles, two zeros. The shapes are the usual ones of an equaliser.
class Biquad {
  public:
    static Biquad LowPass(double hertz, double q = 0.7071);
    static Biquad HighPass(double hertz, double q = 0.7071);
    static Biquad BandPass(double hertz, double q);
    static Biquad Peak(double hertz, double q, double decibels);
    static Biquad HighShelf(double hertz, double decibels);

    float Next(float sample);
    void Run(Mono& sound);
    /// Both channels, each from rest.
    void Run(Stereo& sound) const;

  private:
    Biquad(double b0, double b1, double b2, double a0, double a1, double a2);
    double b0_, b1_, b2_, a1_, a2_, z1_ = 0, z2_ = 0;
};

}  // namespace sorakaze::station
