// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/ShortNames.h"

#include <algorithm>

#include "base/Ascii.h"
#include "base/NearestWord.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"
#include "gateway/encyclopaedia/Names.h"
#include "gateway/encyclopaedia/ParagraphText.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kMostWords = 16;

bool IsJapaneseCharacter(char32_t code) {
    return (code >= 0x3040 && code < 0x3100) || (code >= 0x3400 && code < 0xA000);
}

bool IsKatakana(char32_t code) {
    return code >= 0x30A0 && code < 0x3100;
}

/// Keys of the words, without "the".
std::vector<std::string> Words(std::string_view name) {
    std::vector<std::string> words;
    std::string word;
    const auto end = [&] {
        const std::string key = NameKey(word);
        if (!key.empty() && key != "the" && words.size() < kMostWords) words.push_back(key);
        word.clear();
    };
    for (std::size_t at = 0; at < name.size();) {
        const std::string_view character = CharacterAt(name, at);
        at += character.size();
        if (IsOneOf(character, {" ", ".", "・", "\u3000"})) {
            end();
        } else {
            word += character;
        }
    }
    end();
    return words;
}

bool IsSameWord(std::string_view one, std::string_view other) {
    constexpr std::size_t kLong = 7, kVeryLong = 9;
    const std::size_t length = std::min(one.size(), other.size());
    if (one == other) return true;
    return length >= kLong && CountSlips(one, other) <= (length >= kVeryLong ? 2u : 1u);
}

/// How many of the words from `first` on the letters are the initials of; 0 if not.
std::size_t CountInitials(std::string_view letters, const std::vector<std::string>& words,
                          std::size_t first) {
    constexpr std::size_t kMostInitials = 3;
    if (!std::ranges::all_of(letters, ascii::IsLetter) || letters.size() > kMostInitials ||
        first + letters.size() > words.size())
        return 0;
    for (std::size_t i = 0; i < letters.size(); ++i) {
        const std::string& word = words[first + i];
        // "J.S." is the site's own short form of "ヨハン・ゼバスティアン" too.
        if (word[0] != letters[i] && !IsKatakana(utf8::Read(word, 0).code)) return 0;
    }
    return letters.size();
}

struct Match {
    bool isWhole = false;   ///< every word of the part was found, in order
    bool isStrong = false;  ///< one of them as a word of three letters or more
    bool beginsAlike = false;
    bool endsAlike = false;
};

Match MatchWords(const std::vector<std::string>& part, const std::vector<std::string>& whole) {
    constexpr std::size_t kStrongLetters = 3;
    Match match;
    std::size_t at = 0;
    for (const std::string& word : part) {
        std::size_t taken = 0;
        bool isSame = false;
        for (; at < whole.size() && taken == 0; at += taken > 0 ? 0 : 1) {
            isSame = IsSameWord(word, whole[at]);
            taken = isSame ? 1 : CountInitials(word, whole, at);
        }
        if (taken == 0) return match;
        match.isStrong = match.isStrong || (isSame && word.size() >= kStrongLetters);
        match.beginsAlike = match.beginsAlike || (&word == &part.front() && at == 0 && isSame);
        at += taken;
        match.endsAlike = &word == &part.back() && at == whole.size() && isSame;
    }
    match.isWhole = !part.empty();
    return match;
}

/// "utada hikaru" for "Hikaru Utada".
bool IsFamilyNameFirst(const std::vector<std::string>& part, std::vector<std::string> words) {
    if (words.size() < 2 || part.size() != words.size()) return false;
    std::rotate(words.begin(), words.end() - 1, words.end());
    return part == words;
}

/// "peter ilyich tchaikovsky" for "Pyotr Ilyich Tchaikovsky": a first name in another language.
bool DiffersInFirstName(const std::vector<std::string>& part, const std::vector<std::string>& words) {
    constexpr std::size_t kFewestWords = 3;
    return words.size() >= kFewestWords && part.size() == words.size() && part[0][0] == words[0][0] &&
           std::equal(part.begin() + 1, part.end(), words.begin() + 1);
}

bool IsGroupNoun(std::string_view word) {
    return IsOneOf(word, {"band", "group", "brothers", "sisters", "orchestra", "trio", "quartet", "quintet",
                          "ensemble", "choir", "boys", "girls", "family", "project", "players", "singers"});
}

bool HasJoiner(const std::vector<std::string>& words) {
    return std::ranges::any_of(words, [](const std::string& word) {
        return IsOneOf(word, {"and", "with", "feat", "featuring", "vs", "アンド", "ウィズ"});
    });
}

/// "サザン" for "サザンオールスターズ", which has no blanks.
bool IsJapaneseBeginning(std::string_view part, std::string_view whole) {
    constexpr std::size_t kFewestKatakana = 3, kFewest = 2;
    const std::string key = NameKey(part), wholeKey = NameKey(whole);
    const auto first = utf8::Read(part, 0).code;
    if (!IsJapaneseCharacter(first) || !wholeKey.starts_with(key)) return false;
    const std::string_view rest = std::string_view(wholeKey).substr(key.size());
    return CountCharacters(key) >= (IsKatakana(first) ? kFewestKatakana : kFewest) &&
           !rest.starts_with("と") && !rest.starts_with("アンド") && !rest.starts_with("and");
}

/// Where there is a blank between two Japanese characters.
std::size_t JapaneseBlank(std::string_view name, bool& isInKatakana) {
    char32_t before = 0;
    for (std::size_t at = 0; at < name.size();) {
        const auto [code, size] = utf8::Read(name, at);
        if (code == ' ' && IsJapaneseCharacter(before) && at + 1 < name.size()) {
            const char32_t after = utf8::Read(name, at + 1).code;
            isInKatakana = IsKatakana(before) && IsKatakana(after);
            if (IsJapaneseCharacter(after)) return at;
        }
        before = code;
        at += size;
    }
    return name.npos;
}

}  // namespace

bool IsShortFor(std::string_view part, std::string_view whole, Bearer bearer) {
    if (part.empty()) return false;
    const auto partWords = Words(part), words = Words(whole);
    if (HasJoiner(words) && !HasJoiner(partWords)) return false;
    if (bearer == Bearer::Person &&
        (IsFamilyNameFirst(partWords, words) || DiffersInFirstName(partWords, words)))
        return true;
    const Match match = MatchWords(partWords, words);
    if (match.isWhole && match.isStrong) {
        if (bearer == Bearer::Person) return match.beginsAlike || match.endsAlike;
        return match.endsAlike && !(partWords.size() == 1 && IsGroupNoun(partWords.back()));
    }
    return IsJapaneseBeginning(part, whole);
}

std::vector<std::string> Spellings(std::string_view name) {
    std::vector<std::string> spellings{std::string(name)};
    bool isInKatakana = false;
    if (JapaneseBlank(name, isInKatakana) != name.npos) {
        std::string joined(name);
        for (std::size_t at = joined.find(' '); at != joined.npos; at = joined.find(' ', at))
            joined.replace(at, 1, isInKatakana ? "・" : "");
        spellings.insert(spellings.begin(), joined);
        return spellings;
    }
    const std::size_t comma = name.find(", ");
    if (comma != name.npos && name.find(',', comma + 1) == name.npos && name.find('&') == name.npos) {
        spellings.push_back(std::string(name.substr(comma + 2)) + " " + std::string(name.substr(0, comma)));
    } else if (name.starts_with("the ") || name.starts_with("The ")) {
        spellings.emplace_back(name.substr(4));
    } else if (utf8::Read(name, 0).code < 0x80) {
        spellings.push_back("the " + std::string(name));
    }
    return spellings;
}

}  // namespace sorakaze::gateway
