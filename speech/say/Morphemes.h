// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

/// One word of a Japanese text, or one mark.
struct Morpheme {
    std::size_t begin = 0;  ///< bytes in the text; blanks belong to no morpheme
    std::size_t end = 0;
    std::string surface;
    std::string kind;           ///< the word class: "名詞", "助詞", "記号"...
    std::string detail;         ///< its first division: "数", "接尾", "非自立"...
    std::string conjugation;    ///< of a verb: "サ変・スル"...
    std::string pronunciation;  ///< in katakana, as it is spoken ("ワ" for the particle "は"); may be empty
};

/// Parts a text with the system's dictionary. Texts must be valid UTF-8. Throws std::runtime_error with one
/// line for the user where there is no dictionary.
std::vector<Morpheme> FindMorphemes(const std::string& text);

}  // namespace sorakaze::speech
