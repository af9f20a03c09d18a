// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What an English voice that knows ASCII alone is given of any text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

/// ASCII without control characters: accents are dropped, other scripts are spelt in Latin letters, marks
/// become those of ASCII, and what has no sound is left out. Any bytes.
std::string EnglishText(std::string_view text);

/// An English text in parts of at most `longest` bytes (100 or more), each of which is spoken by itself:
/// whole sentences if possible. A word that is longer is divided. Together they are the text, but for blanks.
std::vector<std::string> SpeakableParts(std::string_view text, std::size_t longest);

}  // namespace sorakaze::speech
