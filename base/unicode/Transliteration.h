// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Writing a text in another script, by ICU's rules. Pure functions. Bytes that aren't UTF-8 become
// replacement characters; what has no counterpart stays. A text stays as it is where ICU's data is missing.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::unicode {

/// The text by rules in ICU's language, such as "::Greek-Latin/UNGEGN; ph > f;". What is made of them takes
/// milliseconds and is kept for the program's life: `rules` lives as long. Any thread. Throws
/// std::runtime_error for rules that ICU doesn't take.
std::string Transliterated(std::string_view utf8, const char* rules);

/// Any script in small letters from a to z: for comparing, not for saying.
std::string ToPlainLatin(std::string_view utf8);

}  // namespace sorakaze::unicode
