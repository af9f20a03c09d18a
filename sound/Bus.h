// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::sound {

/// What a voice of the engine is, for the desk: it levels each kind its own way, and lowers music and effects
/// under speech.
enum class Bus { Music, Effects, Speech };

}  // namespace sorakaze::sound
