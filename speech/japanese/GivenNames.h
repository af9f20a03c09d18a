// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::japanese {

/// The reading in hiragana of a given name of two kanji that is made of common parts, as 翔 and 太 make
/// しょうた; empty for others. A pure function.
std::u32string ComposedGivenName(std::u32string_view name);

}  // namespace sorakaze::japanese
