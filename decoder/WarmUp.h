// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::decoder {

/// Initialises the decoding libraries' tables for the common formats, which every worker would otherwise do
/// for itself. Reads no foreign byte.
void WarmUp();

}  // namespace sorakaze::decoder
