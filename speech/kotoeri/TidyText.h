// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::kotoeri {

/// A title as the dictionary wants to see it: kana composed with their sound marks (file names carry them
/// apart), half-width katakana in full width, iteration marks after kana spelt out, old forms of kanji that
/// the dictionary doesn't know in their common form, without unseen characters between them. Nothing else is
/// exchanged for what merely resembles it.
std::u32string TidyText(std::u32string_view text);

}  // namespace sorakaze::kotoeri
