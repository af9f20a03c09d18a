// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "player/TrackText.h"

namespace sorakaze::player {

/// A track's texts as a presenter says them: without remarks on the edition, names in the order in which they
/// are said. A sort spelling is kept only where the first one isn't in Latin letters. No text becomes empty
/// that isn't. What people see are the file's own texts. A pure function.
TrackText AnnouncedText(TrackText text);

}  // namespace sorakaze::player
