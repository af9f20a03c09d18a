// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <compare>

namespace sorakaze::sound {

/// How a file becomes frames. Whoever measures a file uses the options that it is played with.
struct DecodeOptions {
    /// Leaves out what lies before the first frame above kSilentSample, but for a few milliseconds. A file of
    /// silence has no frames then.
    bool skipHead = false;
    /// Folds more than two channels at the usual coefficients, so that dialogue and front sides keep their
    /// level and sums may exceed full scale; otherwise scaled down so that they never do.
    bool fullFold = false;

    auto operator<=>(const DecodeOptions&) const = default;
};

}  // namespace sorakaze::sound
