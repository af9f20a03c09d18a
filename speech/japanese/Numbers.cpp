// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/Numbers.h"

#include <algorithm>
#include <array>

#include "speech/japanese/Characters.h"

namespace sorakaze::japanese {
namespace {

constexpr std::u32string_view kKanjiDigits = U"〇一二三四五六七八九";
constexpr std::u32string_view kSmallUnits = U"十百千";
constexpr std::u32string_view kMyriads = U"万億兆";

using Readings = std::array<std::u32string_view, 10>;
constexpr Readings kDigits = {U"ぜろ", U"いち", U"に",   U"さん", U"よん",
                              U"ご",   U"ろく", U"なな", U"はち", U"きゅう"};
constexpr Readings kTens = {U"",         U"じゅう",     U"にじゅう",   U"さんじゅう", U"よんじゅう",
                            U"ごじゅう", U"ろくじゅう", U"ななじゅう", U"はちじゅう", U"きゅうじゅう"};
constexpr Readings kHundreds = {U"",         U"ひゃく",     U"にひゃく",   U"さんびゃく", U"よんひゃく",
                                U"ごひゃく", U"ろっぴゃく", U"ななひゃく", U"はっぴゃく", U"きゅうひゃく"};
constexpr Readings kThousands = {U"",       U"せん",     U"にせん",   U"さんぜん", U"よんせん",
                                 U"ごせん", U"ろくせん", U"ななせん", U"はっせん", U"きゅうせん"};
constexpr std::array<const Readings*, 3> kUnitReadings = {&kTens, &kHundreds, &kThousands};
constexpr std::array<std::u32string_view, 3> kMyriadReadings = {U"まん", U"おく", U"ちょう"};
constexpr std::array<std::u32string_view, 3> kWhatReadings = {U"なんじゅう", U"なんびゃく", U"なんぜん"};

/// Of a number that is read as a whole: below ten quadrillion.
constexpr std::size_t kMostDigits = 16;

bool IsAsciiDigits(std::u32string_view text) {
    return std::all_of(text.begin(), text.end(), [](char32_t code) { return code >= U'0' && code <= U'9'; });
}

/// Digits of all kinds as ASCII's; nothing if there is anything but digits, units, 何 and a point.
std::optional<std::u32string> WithAsciiDigits(std::u32string_view number) {
    std::u32string result;
    for (const char32_t code : number) {
        if (const auto digit = kKanjiDigits.find(code); digit != std::u32string_view::npos) {
            result += static_cast<char32_t>(U'0' + digit);
        } else if (IsDigit(code)) {
            result += code >= U'０' ? code - U'０' + U'0' : code;
        } else if (code == U'零') {
            result += U'0';
        } else if (code == U'.' || code == U'何' || kSmallUnits.find(code) != std::u32string_view::npos ||
                   kMyriads.find(code) != std::u32string_view::npos) {
            result += code;
        } else {
            return {};
        }
    }
    return result;
}

std::uint64_t ValueOf(std::u32string_view digits) {
    std::uint64_t value = 0;
    for (const char32_t digit : digits) value = value * 10 + (digit - U'0');
    return value;
}

std::u32string ReadDigits(std::u32string_view digits) {
    std::u32string reading;
    for (const char32_t digit : digits) reading += kDigits[digit - U'0'];
    return reading;
}

/// A thousand is いっせん before a myriad, and one, eight and ten change before 兆.
std::u32string ReadMyriads(std::u32string count, char32_t myriad) {
    if (count.starts_with(U"せん")) count.insert(0, U"いっ");
    if (myriad == U'兆') ChangeBeforeHardSound(count);
    return count.append(kMyriadReadings[kMyriads.find(myriad)]);
}

std::u32string ReadWhole(std::uint64_t number) {
    if (number == 0) return std::u32string(kDigits[0]);
    if (number >= 10'000) {
        std::size_t myriad = 0;
        std::uint64_t unit = 10'000;
        while (number / unit >= 10'000) {
            unit *= 10'000;
            ++myriad;
        }
        return ReadMyriads(ReadWhole(number / unit), kMyriads[myriad]) +
               (number % unit > 0 ? ReadWhole(number % unit) : U"");
    }
    std::u32string reading;
    for (std::size_t unit = kUnitReadings.size(), power = 1000; unit-- > 0; power /= 10)
        reading += (*kUnitReadings[unit])[number / power % 10];
    if (number % 10 > 0) reading += kDigits[number % 10];
    return reading;
}

/// Telephone numbers and agents, and estimates: 二三日.
bool IsReadByDigits(std::u32string_view digits, bool inKanji) {
    const bool rises = std::adjacent_find(digits.begin(), digits.end(),
                                          [](char32_t a, char32_t b) { return b != a + 1; }) == digits.end();
    return digits.size() > kMostDigits ||
           (digits.size() > 1 && (digits.front() == U'0' || (inKanji && digits.size() <= 3 && rises)));
}

std::u32string ReadWithoutUnits(std::u32string_view digits, bool inKanji) {
    return IsReadByDigits(digits, inKanji) ? ReadDigits(digits) : ReadWhole(ValueOf(digits));
}

/// What comes before a unit, or last.
std::u32string ReadCount(std::u32string_view count) {
    if (count.empty()) return {};
    return count == U"何" ? U"なん" : ReadWithoutUnits(count, false);
}

std::u32string ReadWithUnits(std::u32string_view number) {
    std::u32string reading, group, count;
    for (const char32_t code : number) {
        const std::size_t unit = kSmallUnits.find(code);
        if (kMyriads.find(code) != std::u32string_view::npos) {
            reading += ReadMyriads(group + ReadCount(count), code);
            group.clear();
            count.clear();
        } else if (unit == std::u32string_view::npos) {
            count = code == U'何' ? U"何" : count + code;
        } else {
            if (count == U"何") {
                group += kWhatReadings[unit];
            } else if (count == U"1" && code == U'千') {
                group += U"いっせん";
            } else if (count.size() <= 1 && count != U"0") {
                group += (*kUnitReadings[unit])[count.empty() ? 1 : count.front() - U'0'];
            } else {
                group += ReadCount(count).append((*kUnitReadings[unit])[1]);
            }
            count.clear();
        }
    }
    return reading + group + ReadCount(count);
}

}  // namespace

bool ReplaceEnd(std::u32string& text, std::u32string_view end, std::u32string_view replacement) {
    if (!text.ends_with(end)) return false;
    text.replace(text.size() - end.size(), end.size(), replacement);
    return true;
}

bool ChangeBeforeHardSound(std::u32string& reading) {
    return ReplaceEnd(reading, U"いち", U"いっ") || ReplaceEnd(reading, U"はち", U"はっ") ||
           ReplaceEnd(reading, U"じゅう", U"じゅっ");
}

bool IsKanjiNumerals(std::u32string_view text) {
    return text.find_first_not_of(U"何〇零一二三四五六七八九十百千万億兆") == std::u32string_view::npos;
}

std::u32string ReadNumber(std::u32string_view text) {
    if (text == U"零") return U"れい";
    const auto number = WithAsciiDigits(text);
    if (!number || number->empty() || number->front() == U'.') return {};
    const std::size_t point = std::min(number->find(U'.'), number->size());
    const std::u32string_view whole = std::u32string_view(*number).substr(0, point);
    const std::u32string reading =
        IsAsciiDigits(whole) ? ReadWithoutUnits(whole, IsKanji(text.front())) : ReadWithUnits(whole);
    if (point == number->size()) return reading;
    const std::u32string_view decimals = std::u32string_view(*number).substr(point + 1);
    if (decimals.empty() || !IsAsciiDigits(decimals)) return {};
    return reading + U"てん" + ReadDigits(decimals);
}

std::optional<std::uint64_t> NumberValue(std::u32string_view text) {
    const auto number = WithAsciiDigits(text);
    if (!number || number->empty() || number->size() > kMostDigits) return {};
    if (IsAsciiDigits(*number))
        return IsReadByDigits(*number, IsKanji(text.front())) ? std::nullopt
                                                              : std::optional(ValueOf(*number));
    std::uint64_t value = 0, count = 0;
    for (const char32_t code : *number) {
        if (code >= U'0' && code <= U'9') {
            count = count * 10 + (code - U'0');
        } else if (const auto unit = kSmallUnits.find(code); unit != std::u32string_view::npos) {
            value += std::max<std::uint64_t>(count, 1) * (unit == 0 ? 10 : unit == 1 ? 100 : 1000);
            count = 0;
        } else {
            return {};
        }
    }
    return value + count;
}

}  // namespace sorakaze::japanese
