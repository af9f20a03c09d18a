// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <compare>

#include "sound/Frames.h"

namespace sorakaze::sound {

/// A part of a file that is a sound of its own, such as a track of a cue sheet.
struct Excerpt {
    Frames start{};
    Frames length{};  ///< 0: to the file's end

    auto operator<=>(const Excerpt&) const = default;
};

/// How a file becomes frames. Whoever measures a file uses the options that it is played with.
struct DecodeOptions {
    /// Leaves out what lies before the first frame above kSilentSample, but for a few milliseconds. A file of
    /// silence has no frames then.
    bool skipHead = false;
    /// Folds more than two channels at the usual coefficients, so that dialogue and front sides keep their
    /// level and sums may exceed full scale; otherwise scaled down so that they never do.
    bool fullFold = false;
    Excerpt excerpt{};

    auto operator<=>(const DecodeOptions&) const = default;
};

}  // namespace sorakaze::sound
