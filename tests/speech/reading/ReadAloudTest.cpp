// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <fstream>

#include "speech/reading/ReadAloud.h"

namespace sorakaze::reading {
namespace {

/// Blanks in a row are no words.
std::string Words(const std::string& text) {
    std::string words;
    for (const char c : text) {
        if (c != ' ' || (!words.empty() && words.back() != ' ')) words += c;
    }
    while (words.ends_with(' ')) words.pop_back();
    return words;
}

TEST(ReadAloud, SaysWhatAPresenterWould) {
    std::ifstream file(READINGS_FILE);
    int cases = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == ';') continue;
        const auto tab = line.find('\t'), last = line.rfind('\t');
        const std::string text = line.substr(tab + 1, last - tab - 1);
        // A text alone is one that stays.
        EXPECT_EQ(Words(ReadAloud(last == tab ? line.substr(tab + 1) : text, line.substr(0, tab))),
                  line.substr(last + 1))
            << line;
        ++cases;
    }
    EXPECT_GE(cases, 300);
}

TEST(ReadAloud, TakesAnyText) {
    std::string long_;
    for (int i = 0; i < 20'000; ++i) long_ += "no. iv & ";
    EXPECT_LT(ReadAloud(long_, "en").size(), 20 * long_.size());
    EXPECT_EQ(ReadAloud(std::string(100'000, 'o'), "en"), "ooo");
    EXPECT_EQ(ReadAloud(std::string(100'000, '1'), "de"), std::string(12, '1'));
    EXPECT_EQ(ReadAloud(std::string(100'000, '!'), "ja"), "!");
    std::string word;
    for (int i = 0; i < 1'000; ++i) word += "äb";
    EXPECT_EQ(ReadAloud(word, "en").size(), 90) << "sixty characters";
    EXPECT_EQ(ReadAloud("", "en"), "");
}

}  // namespace
}  // namespace sorakaze::reading
