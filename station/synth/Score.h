// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Music in writing: notes with their places in beats, and the tempo that turns beats into seconds.
#pragma once

#include <string_view>
#include <vector>

namespace sorakaze::station {

struct Note {
    double beat = 0;    ///< where it begins
    double beats = 1;   ///< how long it is held
    double pitch = 60;  ///< a MIDI note number
    double velocity = 0.75;
};

using Line = std::vector<Note>;

/// Reads notes that follow each other from `beat` on: "C4:1 Eb4:.5 r:.5 C4+E4+G4:2^ |". A pitch is a letter,
/// # or b, and the octave (C4 is middle C); "+" joins a chord, "r" rests. The length in beats stays until the
/// next one is given. A
/// "^" at the end is an accent, a "," is soft. Bars "|" are for the reader. Throws std::invalid_argument for
/// anything else: the scores are part of the program.
Line Notes(std::string_view text, double beat = 0);

/// Reads a drum line of equal steps: "X" loud, "x" plain, "o" soft, "." nothing; blanks and "|" are for the
/// reader.
Line Steps(std::string_view text, double stepBeats, double beat = 0);

/// The line so many times, each time `beats` later.
Line Repeat(const Line& line, double beats, int times);
Line Later(Line line, double beats);
Line Transposed(Line line, double semitones);
Line Softer(Line line, double factor);
Line operator+(Line first, const Line& second);
double EndOf(const Line& line);

struct Tempo {
    double beatsPerMinute = 120;
    double swing = 0.5;     ///< where the second half of a beat begins: 0.5 straight, 0.667 triplets
    double slowFrom = 1e9;  ///< the beat from which the music slows down
    double slowing = 0;     ///< seconds that each beat from there on is longer than the one before

    double Seconds(double beat) const;
};

}  // namespace sorakaze::station
