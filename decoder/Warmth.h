// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::decoder {

/// Has the libraries make now what every worker would make for itself: the tables of the common formats.
/// Reads no foreign byte.
void WarmUp();

}  // namespace sorakaze::decoder
