// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The covers of the demo library, drawn by rule and compass.
#pragma once

#include "station/synth/Picture.h"

namespace sorakaze::station {

Color LanternCover(double x, double y);
Color CloudCover(double x, double y);
Color PixelCover(double x, double y);
Color CatCover(double x, double y);
Color StairsCover(double x, double y);
Color StonesCover(double x, double y);
Color WindowCover(double x, double y);
Color HatCover(double x, double y);
Color BoatCover(double x, double y);
Color ChimeCover(double x, double y);

}  // namespace sorakaze::station
