// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The text of a Pronunciations.txt. A line is "Name = spelling"; a name that begins with "#" or holds "=" is
// written in double quotes. "#" at a line's start, or between blanks after a spelling, begins a comment.
// What follows a line such as "[de]" is for voices of that language only, after "[all]" it is for all again.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

/// How a name is said.
struct PronunciationEntry {
    std::string name;
    std::string spelling;  ///< holds nothing that a shell or a voice could take for a command
    std::string language;  ///< a code in lower case, such as "de" or "en-gb"; empty for all
};

struct PronunciationFault {
    std::size_t line = 0;  ///< from 1; 0 for the file as a whole
    std::string what;      ///< for people, without a full stop
};

struct PronunciationFile {
    std::vector<PronunciationEntry> entries;  ///< at most kMostPronunciations
    std::vector<PronunciationFault> faults;   ///< the first thousand
};

inline constexpr std::size_t kLargestPronunciationFile = std::size_t{1} << 20;
inline constexpr std::size_t kMostPronunciations = 20'000;

/// Any bytes; linear. A faulty line is left out, and what is beyond the bounds is too. A pure function.
PronunciationFile ParsePronunciations(std::string_view bytes);

}  // namespace sorakaze::speech
