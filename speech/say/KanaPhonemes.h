// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::speech {

/// One word in katakana, as it is spoken, in the engine's phoneme codes for Japanese; its own rules for kana
/// lack many syllables. The pitch rises on the second mora. Characters that are no katakana are left out;
/// empty when nothing is left.
std::string KanaPhonemes(std::string_view katakana);

}  // namespace sorakaze::speech
