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
    for (auto begin = text.begin(), end = begin; begin != text.end(); begin = end) {
        const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
        end = std::find_if(begin, text.end(), [&](char byte) { return isAscii(byte) != isAscii(*begin); });
        reading += isAscii(*begin) ? std::string(begin, end) : reader.Read({begin, end});
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

constexpr int kUnread = -2;

/// For each letter expected, the place where it was read if it was: the longest common subsequence.
std::vector<int> Places(const std::u32string& expected, const std::u32string& read) {
    std::vector<std::vector<int>> common(expected.size() + 1, std::vector<int>(read.size() + 1));
    for (std::size_t i = expected.size(); i-- > 0;) {
        for (std::size_t j = read.size(); j-- > 0;) {
            common[i][j] = expected[i] == read[j] ? common[i + 1][j + 1] + 1
                                                  : std::max(common[i + 1][j], common[i][j + 1]);
        }
    }
    std::vector<int> places(expected.size(), kUnread);
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
    places.insert(places.begin(), -1);  // as if the edges were letters that were read
    places.push_back(static_cast<int>(read.size()));
    const auto joinsTheOneBefore = [&](std::size_t i) {
        return places[i - 1] == kUnread || places[i] == kUnread || places[i] == places[i - 1] + 1;
    };
    Count count;
    std::size_t at = 1;
    for (const std::u32string& word : words) {
        bool good = true;
        const std::size_t begin = at;
        for (const std::size_t end = at + word.size(); at < end; ++at)
            good = good && places[at] != kUnread && joinsTheOneBefore(at);
        if (!good || !joinsTheOneBefore(at)) continue;
        const auto first = letters.begins.begin() + places[begin];
        const auto end = first + static_cast<std::ptrdiff_t>(word.size());
        ++count.right;
        count.split += std::find(first + 1, end, true) != end ? 1 : 0;
    }
    return count;
}

struct Rate {
    int words = 0, rightWords = 0, splitWords = 0;

    void Add(const Title& title, const Reader& reader) {
        const Letters read = LettersRead(reader, title.text);
        Count best;
        for (const auto& reading : title.readings)
            best = std::max(best, RightWords(reading, read),
                            [](const Count& a, const Count& b) { return a.right < b.right; });
        words += static_cast<int>(title.readings.front().size());
        rightWords += best.right;
        splitWords += best.split;
    }
    double Percent() const { return 100.0 * rightWords / words; }
    double PercentSplit() const { return 100.0 * splitWords / words; }
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
    std::printf("right: %.1f %% of all words, %.1f %% of those that nothing was made for\n", all.Percent(),
                heldOut.Percent());
    EXPECT_GE(all.Percent(), 97);
    EXPECT_LE(all.PercentSplit(), 2);
    EXPECT_GE(heldOut.Percent(), 94);
    EXPECT_GE(heldOutWithout.Percent(), 92);
}

}  // namespace
}  // namespace sorakaze::kotoeri
