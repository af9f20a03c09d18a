// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "station/synth/Sound.h"

namespace sorakaze::station {

/// The loudness of a whole sound in LUFS, as broadcasters measure it: weighted for the ear, quiet passages
/// left out.
double Loudness(const Stereo& sound);

/// The highest sample in dBFS.
double PeakDecibels(const Stereo& sound);

/// Makes a sound ready for the air: no rumble, begins at once, rings out to the end and stops there, at that
/// loudness, with no peak above `ceiling` dBFS.
void Master(Stereo& sound, double loudness, double ceiling);

}  // namespace sorakaze::station
