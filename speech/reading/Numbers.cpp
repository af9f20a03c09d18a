// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <charconv>

#include "speech/reading/NumberWords.h"
#include "speech/reading/Rules.h"

namespace sorakaze::reading {
namespace {

using Kind = Token::Kind;

constexpr std::size_t kMostDigits = 12;

/// What a number before it counts: that isn't a year.
constexpr std::string_view kUnits =
    " tracks songs titles times people miles kilometres kilometers metres meters dollars euros pounds yen "
    "percent stücke titel lieder mal menschen meilen kilometer meter euro prozent ";
/// What a number after it tells apart: that isn't a year either.
constexpr std::string_view kCatalogues = " b w v k kv opus number nummer rv köchelverzeichnis d ";
/// What is counted by a German ordinal, "5. sinfonie".
constexpr std::string_view kGermanCounted =
    " sinfonie symphonie satz akt konzert klavierkonzert violinkonzert streichquartett teil band szene "
    "jahrhundert sonate klaviersonate runde mal ";

int ValueOf(const std::string& digits) {
    int value = -1;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

/// Whether the number is a part of another one: "1,984", "3.1984", "12:30".
bool IsPartOfNumber(const Sentence& sentence, std::size_t index) {
    const auto joins = [&](std::size_t mark, std::size_t other) {
        return sentence.Is(other, Kind::Number) &&
               (sentence.IsMark(mark, ",") || sentence.IsMark(mark, ".") || sentence.IsMark(mark, ":"));
    };
    return joins(index - 1, index - 2) || joins(index + 1, index + 2);
}

bool IsYear(const Sentence& sentence, std::size_t index) {
    if (IsPartOfNumber(sentence, index)) return false;
    const std::size_t next = sentence.Next(index), previous = sentence.Previous(index);
    if (IsOneOf(sentence.At(next).lower, kUnits) || sentence.IsMark(next, "%") || sentence.IsMark(next, "°"))
        return false;
    for (const std::string_view mark : {"#", "$", "€", "£", "¥", "°"}) {
        if (sentence.IsMark(index - 1, mark)) return false;
    }
    // What the abbreviations have become ends with the word that counts.
    const std::string& before = sentence.At(previous).lower;
    const auto blank = before.find_last_of(' ', before.size() > 1 ? before.size() - 2 : 0);
    return !IsOneOf(blank == before.npos ? before : before.substr(blank + 1), kCatalogues);
}

/// How many tokens after the number belong to "80s", "80's" and "80er"; 0 if it is none of these.
std::size_t DecadeEnd(const Sentence& sentence, std::size_t index, Main main) {
    const std::size_t mark = sentence.IsMark(index + 1, "'") ? 1 : 0;
    if (sentence.IsWord(index + 1 + mark, "s")) return 1 + mark;
    const bool german = main == Main::German && mark == 0;
    return german && (sentence.IsWord(index + 1, "er") || sentence.IsWord(index + 1, "ern")) ? 1 : 0;
}

bool ReadDecade(Sentence& sentence, std::size_t index, Main voice) {
    const std::string& digits = sentence.At(index).text;
    const std::size_t end = DecadeEnd(sentence, index, voice);
    if (end == 0 || (digits.size() != 2 && digits.size() != 4)) return false;
    const Main main = LanguageAt(sentence, index + end, voice);
    const std::string words = Decade(ValueOf(digits), main);
    if (words.empty()) {
        if (main != Main::Japanese || digits.back() != '0') return false;
        sentence.Replace(index, Kind::Number, digits + "年代");
    } else {
        sentence.Replace(index, Kind::Word, words);
    }
    for (std::size_t i = 1; i <= end; ++i) sentence.Remove(index + i);
    if (sentence.IsMark(index - 1, "'")) sentence.Remove(index - 1);
    return true;
}

bool ReadOrdinal(Sentence& sentence, std::size_t index, Main main) {
    const std::string& digits = sentence.At(index).text;
    if (digits.size() > 2) return false;
    const std::string& suffix = sentence.At(index + 1).lower;
    const std::string words = Ordinal(ValueOf(digits), main);
    if (words.empty()) return false;
    if (main == Main::English && IsOneOf(suffix, " st nd rd th ")) {
        sentence.Replace(index, Kind::Word, words);
        sentence.Remove(index + 1);
        return true;
    }
    if (main != Main::German || !sentence.IsMark(index + 1, ".") || !sentence.Is(index + 2, Kind::Blank) ||
        !IsOneOf(sentence.At(index + 3).lower, kGermanCounted))
        return false;
    sentence.Replace(index, Kind::Word, words);
    sentence.Remove(index + 1);
    return true;
}

/// "'69", with the apostrophe in front.
bool ReadShortYear(Sentence& sentence, std::size_t index, Main main) {
    const std::string& digits = sentence.At(index).text;
    const std::size_t before = index >= 2 ? index - 2 : Sentence::kNone;
    if (digits.size() != 2 || !sentence.IsMark(index - 1, "'") || sentence.Is(before, Kind::Word))
        return false;
    const std::string words = Cardinal(ValueOf(digits), main);
    if (words.empty()) return false;
    sentence.Replace(index, Kind::Word, (main == Main::English && digits[0] == '0' ? "oh " : "") + words);
    sentence.Remove(index - 1);
    return true;
}

}  // namespace

void ReadNumbers(Sentence& sentence, Main voice) {
    for (std::size_t i = 0; i < sentence.Size(); ++i) {
        if (!sentence.Is(i, Kind::Number)) continue;
        const Main main = LanguageAt(sentence, i, voice);
        const std::string digits = sentence.At(i).text;
        if (ReadDecade(sentence, i, voice) || ReadOrdinal(sentence, i, main) ||
            ReadShortYear(sentence, i, main))
            continue;
        if (digits.size() > kMostDigits) sentence.Replace(i, Kind::Number, digits.substr(0, kMostDigits));
        if (digits.size() != 4 || !IsYear(sentence, i)) continue;
        if (const std::string words = Year(ValueOf(digits), main); !words.empty())
            sentence.ReplaceByWords(i, words);
    }
}

}  // namespace sorakaze::reading
