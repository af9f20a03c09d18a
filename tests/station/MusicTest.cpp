// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Facts about every piece and every sound: length, loudness, peaks, beginnings and ends, and that no two are
// alike.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "station/synth/Catalogue.h"
#include "station/synth/Filters.h"
#include "station/synth/Master.h"
#include "station/synth/StationSounds.h"

namespace sorakaze::station {
namespace {

double Level(const Stereo& sound, std::size_t from, std::size_t count) {
    double sum = 0;
    for (std::size_t i = from; i < std::min(from + count, sound.Length()); ++i) {
        sum += double{sound.left[i]} * sound.left[i] + double{sound.right[i]} * sound.right[i];
    }
    return 10 * std::log10(sum / static_cast<double>(count) + 1e-12);
}

Stereo Finished(Stereo sound, double loudness, double shortest, double longest) {
    Master(sound, loudness, -1.8);
    EXPECT_GE(sound.Seconds(), shortest);
    EXPECT_LE(sound.Seconds(), longest);
    EXPECT_NEAR(Loudness(sound), loudness, 0.3);
    EXPECT_LE(PeakDecibels(sound), -1.79);
    EXPECT_TRUE(std::all_of(sound.left.begin(), sound.left.end(),
                            [](float sample) { return std::isfinite(sample); }));
    const std::size_t end = Samples(0.01);
    EXPECT_LT(std::abs(sound.left.front()), 0.02);
    EXPECT_LT(Level(sound, sound.Length() - end, end), -60) << "it breaks off";
    EXPECT_GT(Level(sound, 0, Samples(2)), -45) << "it begins late";
    EXPECT_NE(sound.left, sound.right);
    return sound;
}

/// How much of a sound lies in each of five bands, in dB below the whole: its colour.
std::vector<double> Colour(const Stereo& sound) {
    std::vector<double> bands;
    for (const double hertz : {80.0, 240.0, 700.0, 2200.0, 7000.0}) {
        Stereo band = sound;
        Biquad::BandPass(hertz, 0.8).Run(band);
        bands.push_back(Level(band, 0, band.Length()) - Level(sound, 0, sound.Length()));
    }
    return bands;
}

TEST(Music, EverySoundIsFinishedAndEveryPieceOfItsOwnColour) {
    std::map<std::string, std::vector<double>> colours;
    for (const Track& track : Tracks()) {
        SCOPED_TRACE(track.file);
        const auto colour = Colour(Finished(track.play(), -16, 25, 60));
        for (const auto& [other, its] : colours) {
            const double distance =
                std::transform_reduce(colour.begin(), colour.end(), its.begin(), 0.0, std::plus<>(),
                                      [](double a, double b) { return std::abs(a - b); });
            EXPECT_GT(distance, 2.5) << "sounds like " << other;
        }
        colours[track.file] = colour;
    }
    for (const StationSound& made : StationSounds()) {
        if (std::string(made.file) == "time-signal.aiff")
            continue;  // the same on both sides, and it ends sharp
        SCOPED_TRACE(made.file);
        Finished(made.play(), -15, 2, 8.5);
    }
}

TEST(Music, LoudnessIsMeasuredAsBroadcastersDo) {
    // A full-scale sine of 997 Hz on one side reads -3.01 LUFS; silence after it doesn't count.
    Stereo tone;
    Mono sine(Samples(5));
    for (std::size_t i = 0; i < sine.size(); ++i)
        sine[i] = static_cast<float>(Sine(997.0 * static_cast<double>(i) / kRate));
    tone.Add(sine, 0, 1, {-1});
    EXPECT_NEAR(Loudness(tone), -3.01, 0.15);
    tone.Resize(tone.Length() * 2);
    EXPECT_NEAR(Loudness(tone), -3.01, 0.4);
}

}  // namespace
}  // namespace sorakaze::station
