// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::speech {

/// A word in katakana, as it is spoken, in the engine's phoneme codes for Japanese; the engine's own rules
/// for kana lack many syllables. The pitch rises on the second mora. Other characters are left out; empty if
/// nothing is left.
std::string KanaPhonemes(std::string_view katakana);

}  // namespace sorakaze::speech
