// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the station plays between its tracks: themes, jingles and effects, all around one call of four notes.
// They come unmastered.
#pragma once

#include <span>

#include "station/synth/Sound.h"

namespace sorakaze::station {

struct StationSound {
    const char* file;  ///< relative to Sounds
    Stereo (*play)();
};

std::span<const StationSound> StationSounds();

// Jingles.cpp
Stereo MarimbaJingle();
Stereo BrassJingle();
Stereo HarpJingle();
Stereo ChipJingle();
Stereo VibraphoneJingle();
Stereo OrganJingle();

// Themes.cpp
Stereo OpeningTheme();
Stereo ClosingTheme();
Stereo NightTheme();
Stereo Ident();
Stereo TimeSignal();
Stereo SoftSting();
Stereo DrumSting();
Stereo Riser();

}  // namespace sorakaze::station
