// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Turns the engine's raw speech into speech that can be laid over music: no rumble, one loudness for every
// voice, no peak above the ceiling, no long silence at either end. Samples stream through in bounded memory;
// one call of the program uses one Leveller on one thread.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <vector>

namespace sorakaze::speech {

class Leveller {
  public:
    /// Takes the finished samples, block by block.
    using Sink = std::function<void(std::span<const std::int16_t>)>;

    struct Settings {
        double gain = 0;   ///< decibels on top of the usual loudness
        double pause = 0;  ///< seconds of silence at the end, beside the usual ones
    };

    Leveller(int sampleRate, Sink sink, Settings settings);

    void Write(std::span<const std::int16_t> raw);

    /// Passes on what was held back. Speech without a sound becomes a short silence.
    void Finish();

  private:
    /// Second-order high-pass filter, transposed direct form II.
    struct HighPass {
        HighPass(double sampleRate, double cutoff);
        float Next(float sample);
        double b0, b1, b2, a1, a2, z1 = 0, z2 = 0;
    };

    /// Look-ahead limiter: the gain is reduced before the peak and restored slowly, so that it isn't heard.
    class Limiter {
      public:
        explicit Limiter(int sampleRate);
        float Next(float sample);
        int Delay() const { return length_ - 1; }

      private:
        float LowestOfWindow(float gain);

        struct Candidate {
            std::int64_t position;
            float gain;
        };

        int length_;
        float release_;
        float held_ = 1;
        double sum_;
        std::int64_t position_ = 0;
        std::deque<Candidate> lowest_;
        std::vector<float> samples_, gains_;
    };

    void Measure();
    double Loudness() const;
    void Level(float sample);
    void Trim(float sample);
    void Emit(float sample);
    void Flush();

    int sampleRate_;
    Sink sink_;
    Settings settings_;
    HighPass highPass_;
    Limiter limiter_;
    std::vector<float> measured_;  ///< the start, until the gain is known
    bool gainKnown_ = false;
    float gain_ = 1;
    int settling_;               ///< samples until the limiter's first real one
    bool sounding_ = false;      ///< the first sound has been found
    std::deque<float> silence_;  ///< up to the first sound, or since the last one
    std::vector<std::int16_t> block_;
};

}  // namespace sorakaze::speech
