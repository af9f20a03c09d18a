// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Turns a text as it is written into words that every voice says right: "symphony no. 5, op. 67" becomes
// "symphony number 5, opus 67". Called by `say` before its engines. It never decides what is shown.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::reading {

/// What a voice of that language, a code such as "en-us", says for a text. Titles may be in lower case and
/// without their hyphens. English, German and Japanese are known whole; French, Spanish and Italian have
/// their words for abbreviations and signs; for other languages what has no sound is left out. Any bytes:
/// valid UTF-8 stays valid. Linear; the result is at most some twenty times as long. A pure function.
std::string ReadAloud(std::string_view text, std::string_view language);

}  // namespace sorakaze::reading
