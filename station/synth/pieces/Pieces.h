// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The pieces of the demo library, each composed in a file of its own. They come unmastered.
#pragma once

#include "station/synth/Sound.h"

namespace sorakaze::station {

Stereo PlayBossa();
Stereo PlayClouds();
Stereo PlayChiptune();
Stereo PlayWaltz();
Stereo PlayBlues();
Stereo PlayMarimbas();
Stereo PlayLoFi();
Stereo PlayFugue();
Stereo PlayMailBoat();
Stereo PlayWindChime();

}  // namespace sorakaze::station
