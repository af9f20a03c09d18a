// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Effects.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "station/synth/Filters.h"

namespace sorakaze::station {
namespace {

class DelayLine {
  public:
    explicit DelayLine(std::size_t length) : samples_(std::max<std::size_t>(1, length), 0.0F) {}
    float Oldest() const { return samples_[at_]; }
    void Push(float sample) {
        samples_[at_] = sample;
        if (++at_ == samples_.size()) at_ = 0;
    }

  private:
    Mono samples_;
    std::size_t at_ = 0;
};

class AllPass {
  public:
    explicit AllPass(std::size_t length) : line_(length) {}
    float Next(float sample) {
        const float old = line_.Oldest();
        const float in = sample + 0.6F * old;
        line_.Push(in);
        return old - 0.6F * in;
    }

  private:
    DelayLine line_;
};

/// A network of eight delay lines that feed each other through a Hadamard matrix.
class Network {
  public:
    explicit Network(const Room& room) {
        constexpr std::array<double, kLines> kMilliseconds = {31.3, 36.7, 41.9, 47.1, 53.3, 60.1, 67.7, 74.9};
        for (std::size_t i = 0; i < kLines; ++i) {
            const double seconds = kMilliseconds[i] / 1000 * room.size;
            lines_.emplace_back(Samples(seconds));
            damping_.emplace_back(room.dampingHertz);
            gains_[i] = static_cast<float>(std::pow(10, -3 * seconds / room.seconds));
        }
    }

    std::array<float, 2> Next(float left, float right) {
        std::array<float, kLines> out{};
        for (std::size_t i = 0; i < kLines; ++i) out[i] = damping_[i].Low(lines_[i].Oldest()) * gains_[i];
        const std::array<float, 2> heard = {out[0] - out[2] + out[4] - out[6],
                                            out[1] - out[3] + out[5] - out[7]};
        for (std::size_t step = 1; step < kLines; step *= 2) {
            for (std::size_t i = 0; i < kLines; ++i) {
                if (i & step) continue;
                const float a = out[i], b = out[i | step];
                out[i] = a + b;
                out[i | step] = a - b;
            }
        }
        const float norm = 1 / std::sqrt(static_cast<float>(kLines));
        for (std::size_t i = 0; i < kLines; ++i) lines_[i].Push(out[i] * norm + (i % 2 ? right : left));
        return heard;
    }

  private:
    static constexpr std::size_t kLines = 8;
    std::vector<DelayLine> lines_;
    std::vector<OnePole> damping_;
    std::array<float, kLines> gains_{};
};

float At(const Mono& sound, double position) {
    if (position < 0) return 0;
    const auto whole = static_cast<std::size_t>(position);
    if (whole + 1 >= sound.size()) return 0;
    const auto part = static_cast<float>(position - static_cast<double>(whole));
    return sound[whole] + part * (sound[whole + 1] - sound[whole]);
}

/// Every sample read from `depthSeconds` to three times as much back, moving as a sine of that phase.
Mono Wavering(const Mono& sound, double depthSeconds, double hertz, double phase) {
    Mono out(sound.size());
    const double depth = depthSeconds * kRate;
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double t = static_cast<double>(i);
        out[i] = At(sound, t - depth * (2 + Sine(hertz * t / kRate + phase)));
    }
    return out;
}

}  // namespace

Stereo Reverberate(const Stereo& sound, const Room& room) {
    Stereo out;
    out.Resize(sound.Length() + Samples(room.preDelay + room.seconds));
    Network network(room);
    DelayLine waitLeft(Samples(room.preDelay)), waitRight(Samples(room.preDelay));
    std::array<AllPass, 3> diffuseLeft = {AllPass(229), AllPass(547), AllPass(907)};
    std::array<AllPass, 3> diffuseRight = {AllPass(241), AllPass(523), AllPass(941)};
    for (std::size_t i = 0; i < out.Length(); ++i) {
        float left = waitLeft.Oldest(), right = waitRight.Oldest();
        waitLeft.Push(i < sound.Length() ? sound.left[i] : 0);
        waitRight.Push(i < sound.Length() ? sound.right[i] : 0);
        for (auto& stage : diffuseLeft) left = stage.Next(left);
        for (auto& stage : diffuseRight) right = stage.Next(right);
        const auto heard = network.Next(left * 0.35F, right * 0.35F);
        out.left[i] = heard[0];
        out.right[i] = heard[1];
    }
    return out;
}

Stereo PingPong(const Stereo& sound, const Echo& echo) {
    Stereo out;
    const double repeats = std::ceil(std::log(0.001) / std::log(echo.feedback));
    out.Resize(sound.Length() + Samples(echo.seconds * (repeats + 1)));
    DelayLine left(Samples(echo.seconds)), right(Samples(echo.seconds));
    OnePole dampLeft(echo.dampingHertz), dampRight(echo.dampingHertz);
    const auto feedback = static_cast<float>(echo.feedback);
    for (std::size_t i = 0; i < out.Length(); ++i) {
        const float in = i < sound.Length() ? 0.7071F * (sound.left[i] + sound.right[i]) : 0;
        out.left[i] = dampLeft.Low(left.Oldest());
        out.right[i] = dampRight.Low(right.Oldest());
        left.Push(in + out.right[i] * feedback);
        right.Push(out.left[i]);
    }
    return out;
}

Stereo Chorus(const Stereo& sound, double depthSeconds, double hertz, double mix) {
    Stereo moved{Wavering(sound.left, depthSeconds, hertz, 0),
                 Wavering(sound.right, depthSeconds, hertz, 0.25)};
    Stereo out = sound;
    out.Add(moved, 0.006, mix);
    return out;
}

void SwayPan(Stereo& sound, double hertz, double depth) {
    for (std::size_t i = 0; i < sound.Length(); ++i) {
        const double sway = depth * Sine(hertz * static_cast<double>(i) / kRate);
        sound.left[i] *= static_cast<float>(1 + sway);
        sound.right[i] *= static_cast<float>(1 - sway);
    }
}

Stereo Wow(const Stereo& sound, double depthSeconds, double hertz) {
    return {Wavering(sound.left, depthSeconds, hertz, 0), Wavering(sound.right, depthSeconds, hertz, 0)};
}

void Saturate(Mono& sound, double drive) {
    const auto in = static_cast<float>(drive);
    const auto out = static_cast<float>(1 / std::tanh(drive));
    for (float& sample : sound) sample = std::tanh(sample * in) * out;
}

void Saturate(Stereo& sound, double drive) {
    Saturate(sound.left, drive);
    Saturate(sound.right, drive);
}

}  // namespace sorakaze::station
