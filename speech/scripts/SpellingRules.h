// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How the words of each script are spelt, in the rule language of ICU's transliterators. Rules are given one
// word at a time: ^ and $ are its ends. "::Null;" ends a pass.
#pragma once

#include <string_view>

namespace sorakaze::scripts {

/// The rules for a word in `script`, which has four letters; null for scripts that stay as they are.
const char* SpellingRules(std::string_view script, std::u32string_view word);

extern const char* const kChineseRules;
extern const char* const kKatakanaRules;

}  // namespace sorakaze::scripts
