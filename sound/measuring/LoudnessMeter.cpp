// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/measuring/LoudnessMeter.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace sorakaze::sound {
namespace {

constexpr unsigned long kLongestWindow = 1000;  // milliseconds
/// It keeps three seconds of the sound. Asked for a window of one second the library takes a thousand.
constexpr int kWindowMode = EBUR128_MODE_S;

float Decibels(double amplitude) {
    return amplitude > 0 ? std::max(kSilentLoudness, static_cast<float>(20 * std::log10(amplitude)))
                         : kSilentLoudness;
}

/// The library says minus infinity for silence.
float Bounded(int result, double loudness) {
    return result == EBUR128_SUCCESS && loudness > double{kSilentLoudness} ? static_cast<float>(loudness)
                                                                           : kSilentLoudness;
}

template <typename Ask>
float LargestPeak(ebur128_state* state, Ask ask) {
    double largest = 0;
    for (unsigned channel = 0; channel < kChannels; ++channel) {
        double peak = 0;
        if (ask(state, channel, &peak) == EBUR128_SUCCESS) largest = std::max(largest, peak);
    }
    return Decibels(largest);
}

}  // namespace

void LoudnessMeter::Destroy::operator()(ebur128_state* state) const {
    ebur128_destroy(&state);
}

LoudnessMeter::LoudnessMeter(Extras extras)
    : state_(ebur128_init(kChannels, kSampleRate,
                          EBUR128_MODE_I | kWindowMode | EBUR128_MODE_SAMPLE_PEAK | EBUR128_MODE_HISTOGRAM |
                              (extras.range ? EBUR128_MODE_LRA : 0) |
                              (extras.truePeak ? EBUR128_MODE_TRUE_PEAK : 0))) {
    if (!state_) throw std::bad_alloc();
}

void LoudnessMeter::Add(std::span<const float> interleaved) {
    if (ebur128_add_frames_float(state_.get(), interleaved.data(), interleaved.size() / kChannels) !=
        EBUR128_SUCCESS)
        throw std::bad_alloc();
}

float LoudnessMeter::Integrated() const {
    double loudness = 0;
    const int result = ebur128_loudness_global(state_.get(), &loudness);
    return Bounded(result, loudness);
}

float LoudnessMeter::Last(Frames length) const {
    const auto milliseconds =
        static_cast<unsigned long>(std::max<std::int64_t>(length.count * 1000 / kSampleRate, 0));
    double loudness = 0;
    const int result =
        ebur128_loudness_window(state_.get(), std::clamp(milliseconds, 1ul, kLongestWindow), &loudness);
    return Bounded(result, loudness);
}

float LoudnessMeter::Peak() const {
    return LargestPeak(state_.get(), ebur128_sample_peak);
}

float LoudnessMeter::TruePeak() const {
    return LargestPeak(state_.get(), ebur128_true_peak);
}

float LoudnessMeter::Range() const {
    double range = 0;
    const int result = ebur128_loudness_range(state_.get(), &range);
    return result == EBUR128_SUCCESS && range > 0 ? static_cast<float>(range) : 0.0f;
}

}  // namespace sorakaze::sound
