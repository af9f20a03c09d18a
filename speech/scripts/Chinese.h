// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::scripts {

bool HasKana(std::string_view text);

/// Whether a text is Chinese and not Japanese, as far as its characters show: no kana, and characters that
/// Japanese doesn't use, or several words that only Chinese writes. Reads the first few hundred characters.
bool IsChinese(std::string_view text);

/// The same of a word of Chinese characters within any text.
bool HasOnlyChinese(std::u32string_view word);

}  // namespace sorakaze::scripts
