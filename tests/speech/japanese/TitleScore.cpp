// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/speech/japanese/TitleScore.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <numeric>
#include <sstream>

#include "speech/japanese/Characters.h"
#include "speech/kotoeri/Hiragana.h"

namespace sorakaze::test {
namespace {

using namespace japanese;

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

/// The letters of a reading, and which of them start a word.
struct Letters {
    std::u32string text;
    std::vector<bool> begins;
};

/// Reads as the romanisation does: stretches of single-byte characters stay as they are. The result has kana,
/// digits, Latin letters, and kanji that weren't read, which count as wrong.
Letters LettersRead(const japanese::Reader& reader, const std::string& text) {
    std::string reading;
    for (auto begin = text.begin(), end = begin; begin != text.end(); begin = end) {
        const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
        end = std::find_if(begin, text.end(), [&](char byte) { return isAscii(byte) != isAscii(*begin); });
        reading += isAscii(*begin) ? std::string(begin, end) : kotoeri::InHiragana(reader, {begin, end});
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

/// For each letter expected, where it was read, or kUnread: the longest common subsequence.
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

/// A word is right if its letters are in one piece, with nothing wrong before or after it that isn't a wrong
/// neighbour's. It is split if another starts among its letters.
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

}  // namespace

std::vector<Title> Titles(const std::string& path) {
    std::vector<Title> titles;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        const bool heldOut = line[0] == '*';
        const auto tab = line.find('\t');
        titles.push_back({heldOut, line.substr(heldOut, tab - heldOut), Readings(line.substr(tab + 1))});
    }
    return titles;
}

std::string Score::Add(const Title& title, const japanese::Reader& reader) {
    const Letters read = LettersRead(reader, title.text);
    Count best{-1, 0};
    for (const auto& reading : title.readings)
        best = std::max(best, RightWords(reading, read),
                        [](const Count& a, const Count& b) { return a.right < b.right; });
    const int size = static_cast<int>(title.readings.front().size());
    words += size;
    rightWords += best.right;
    splitWords += best.split;
    return best.right < size ? Encode(read.text) : std::string();
}

}  // namespace sorakaze::test
