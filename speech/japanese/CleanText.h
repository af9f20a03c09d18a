// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::japanese {

/// Brings a text into the form that the dictionary knows: kana composed with their voicing marks (file names
/// have them apart), half-width katakana in full width, iteration marks after kana spelt out, old forms of
/// kanji in their common form, no invisible characters next to Japanese ones. Nothing else is replaced by
/// what merely resembles it.
std::u32string CleanText(std::u32string_view text);

}  // namespace sorakaze::japanese
