// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How many words of well-known titles are read as a listener would read them.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <numeric>
#include <sstream>

#include "speech/kotoeri/Characters.h"
#include "speech/kotoeri/Reader.h"

namespace sorakaze::kotoeri {
namespace {

struct Title {
    bool heldOut;
    std::string text;
    std::vector<std::vector<std::u32string>> readings;  ///< each a list of words; any of them is right
};

std::vector<std::vector<std::u32string>> Readings(const std::string& field) {
    std::vector<std::vector<std::u32string>> readings(1);
    std::istringstream words(field);
    for (std::string word; words >> word;) {
        std::vector<std::vector<std::u32string>> longer;
        std::istringstream alternatives(word);
        for (std::string one; std::getline(alternatives, one, '/');) {
            for (auto reading : readings) {
                reading.push_back(Decode(one));
                longer.push_back(reading);
            }
        }
        readings = longer;
    }
    return readings;
}

std::vector<Title> Titles() {
    std::vector<Title> titles;
    std::ifstream file(TITLES_FILE);
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        const bool heldOut = line[0] == '*';
        const auto tab = line.find('\t');
        titles.push_back({heldOut, line.substr(heldOut, tab - heldOut), Readings(line.substr(tab + 1))});
    }
    return titles;
}

/// What is said of a title, and before which of its letters a word begins.
struct Letters {
    std::u32string text;
    std::vector<bool> begins;
};

/// Read as the show has it read: stretches of single-byte characters stand for themselves. Kana, digits and
/// Latin letters only; what is left unread counts as wrong.
Letters LettersRead(const Reader& reader, const std::string& text) {
    std::string reading;
    for (std::size_t at = 0; at < text.size();) {
        const auto ascii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at);
        const auto end = ascii(*begin) ? std::find_if_not(begin, text.end(), ascii)
                                       : std::find_if(begin, text.end(), ascii);
        const std::string run(begin, end);
        reading += ascii(*begin) ? run : reader.Read(run);
        at += run.size();
    }
    Letters letters;
    bool begins = true;
    for (const char32_t code : Decode(reading)) {
        const bool isLetter = IsKana(code) || IsKanji(code) || IsDigit(code) ||
                              (code < 0x80 && std::isalpha(static_cast<int>(code)));
        if (isLetter) {
            letters.text += code;
            letters.begins.push_back(begins);
        }
        begins = !isLetter;
    }
    return letters;
}

/// For each letter expected, the place where it was read, -1 if it wasn't: the longest common subsequence.
std::vector<int> Places(const std::u32string& expected, const std::u32string& read) {
    std::vector<std::vector<int>> common(expected.size() + 1, std::vector<int>(read.size() + 1));
    for (std::size_t i = expected.size(); i-- > 0;) {
        for (std::size_t j = read.size(); j-- > 0;) {
            common[i][j] = expected[i] == read[j] ? common[i + 1][j + 1] + 1
                                                  : std::max(common[i + 1][j], common[i][j + 1]);
        }
    }
    std::vector<int> places(expected.size(), -1);
    for (std::size_t i = 0, j = 0; i < expected.size() && j < read.size();) {
        if (expected[i] == read[j]) {
            places[i++] = static_cast<int>(j++);
        } else {
            ++(common[i + 1][j] >= common[i][j + 1] ? i : j);
        }
    }
    return places;
}

struct Count {
    int right = 0;
    int split = 0;  ///< of the right ones
};

/// A word is right when its letters stand in one piece, with nothing wrong squeezed in before or behind it
/// that isn't a wrong neighbour's. It is split where another begins among its letters.
Count RightWords(const std::vector<std::u32string>& words, const Letters& letters) {
    const std::u32string& read = letters.text;
    const std::u32string expected = std::accumulate(words.begin(), words.end(), std::u32string());
    std::vector<int> places = Places(expected, read);
    places.insert(places.begin(), -1);  // so that word i begins at 1 + its place
    places.push_back(static_cast<int>(read.size()));
    Count count;
    std::size_t at = 1;
    for (const std::u32string& word : words) {
        bool good = true;
        for (std::size_t i = 0; i < word.size(); ++i)
            good = good && (places[at + i] >= 0) && (i == 0 || places[at + i] == places[at + i - 1] + 1);
        const bool leftWrong = at > 1 && places[at - 1] < 0;
        const bool rightWrong = places[at + word.size()] < 0;
        good = good && (leftWrong || places[at] == places[at - 1] + 1) &&
               (rightWrong || places[at + word.size()] == places[at + word.size() - 1] + 1);
        if (good) {
            const auto first = letters.begins.begin() + places[at];
            const auto end = first + static_cast<std::ptrdiff_t>(word.size());
            ++count.right;
            count.split += std::find(first + 1, end, true) != end ? 1 : 0;
        }
        at += word.size();
    }
    return count;
}

struct Rate {
    int words = 0, rightWords = 0, splitWords = 0, titles = 0, rightTitles = 0;

    void Add(const Title& title, const Reader& reader) {
        const Letters read = LettersRead(reader, title.text);
        Count best;
        for (const auto& reading : title.readings)
            best = std::max(best, RightWords(reading, read),
                            [](const Count& a, const Count& b) { return a.right < b.right; });
        const int all = static_cast<int>(title.readings.front().size());
        words += all;
        rightWords += best.right;
        splitWords += best.split;
        ++titles;
        rightTitles += best.right == all ? 1 : 0;
    }
    double Percent() const { return 100.0 * rightWords / words; }
    double PercentSplit() const { return 100.0 * splitWords / words; }
    void Print(const char* what) const {
        std::printf(
            "%s: %d of %d words right (%.1f %%), %d of them split, %d of %d titles without a mistake\n", what,
            rightWords, words, Percent(), splitWords, rightTitles, titles);
    }
};

TEST(Titles, AreReadAsAListenerWould) {
    const Reader reader, withoutLexicon({}, Lexicon::Unused);
    Rate all, heldOut, heldOutWithout;
    for (const Title& title : Titles()) {
        all.Add(title, reader);
        if (!title.heldOut) continue;
        const std::u32string text = Decode(title.text);
        for (const Entry& entry : Entries())
            EXPECT_EQ(text.find(entry.surface), std::u32string::npos) << title.text << " has an entry";
        heldOut.Add(title, reader);
        heldOutWithout.Add(title, withoutLexicon);
    }
    all.Print("all");
    heldOut.Print("those that nothing was made for");
    heldOutWithout.Print("the same without the lexicon");
    EXPECT_GE(all.titles, 150);
    EXPECT_GE(heldOut.titles, all.titles / 3);
    EXPECT_GE(all.Percent(), 97);
    EXPECT_LE(all.PercentSplit(), 2);
    EXPECT_GE(heldOut.Percent(), 94);
    EXPECT_GE(heldOutWithout.Percent(), 92);
}

}  // namespace
}  // namespace sorakaze::kotoeri
