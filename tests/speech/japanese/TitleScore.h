// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How many words of a list of titles are read as a listener would read them.
#pragma once

#include <string>
#include <vector>

#include "speech/japanese/Reader.h"

namespace sorakaze::test {

struct Title {
    bool heldOut;  ///< marked with a star: the lexicon has no entry for it
    std::string text;
    std::vector<std::vector<std::u32string>> readings;  ///< lists of words, any of which is right
};

/// The titles of a file, in the format that tests/speech/japanese/Titles.tsv describes.
std::vector<Title> Titles(const std::string& path);

struct Score {
    int words = 0, rightWords = 0, splitWords = 0;

    /// Returns what was read where that is wrong.
    std::string Add(const Title& title, const japanese::Reader& reader);
    double Percent() const { return 100.0 * rightWords / words; }
    double PercentSplit() const { return 100.0 * splitWords / words; }
};

}  // namespace sorakaze::test
