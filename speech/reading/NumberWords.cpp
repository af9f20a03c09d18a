// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/reading/NumberWords.h"

#include <string_view>

namespace sorakaze::reading {
namespace {

constexpr std::string_view kEnglish[] = {"oh",      "one",     "two",       "three",    "four",
                                         "five",    "six",     "seven",     "eight",    "nine",
                                         "ten",     "eleven",  "twelve",    "thirteen", "fourteen",
                                         "fifteen", "sixteen", "seventeen", "eighteen", "nineteen"};
constexpr std::string_view kEnglishTens[] = {"",      "",      "twenty",  "thirty", "forty",
                                             "fifty", "sixty", "seventy", "eighty", "ninety"};
constexpr std::string_view kGerman[] = {"null",     "eins",     "zwei",     "drei",     "vier",
                                        "fünf",     "sechs",    "sieben",   "acht",     "neun",
                                        "zehn",     "elf",      "zwölf",    "dreizehn", "vierzehn",
                                        "fünfzehn", "sechzehn", "siebzehn", "achtzehn", "neunzehn"};
constexpr std::string_view kGermanTens[] = {"",        "",        "zwanzig", "dreißig", "vierzig",
                                            "fünfzig", "sechzig", "siebzig", "achtzig", "neunzig"};

std::string EnglishCardinal(int number) {
    if (number < 20) return std::string(kEnglish[number]);
    std::string words(kEnglishTens[number / 10]);
    if (number % 10 != 0) words += " " + std::string(kEnglish[number % 10]);
    return words;
}

std::string GermanCardinal(int number) {
    if (number < 20) return std::string(kGerman[number]);
    const std::string tens(kGermanTens[number / 10]);
    if (number % 10 == 0) return tens;
    return (number % 10 == 1 ? "ein" : std::string(kGerman[number % 10])) + "und" + tens;
}

std::string EnglishOrdinal(int number) {
    static constexpr std::string_view kIrregular[] = {"",      "first",    "second",  "third",  "fourth",
                                                      "fifth", "sixth",    "seventh", "eighth", "ninth",
                                                      "tenth", "eleventh", "twelfth"};
    if (number <= 12) return std::string(kIrregular[number]);
    if (number < 20) return std::string(kEnglish[number]) + "th";
    const std::string tens(kEnglishTens[number / 10]);
    if (number % 10 == 0) return tens.substr(0, tens.size() - 1) + "ieth";
    return tens + " " + std::string(kIrregular[number % 10]);
}

std::string GermanOrdinal(int number) {
    switch (number) {
        case 1:
            return "erste";
        case 3:
            return "dritte";
        case 7:
            return "siebte";
        case 8:
            return "achte";
        default:
            return GermanCardinal(number) + (number < 20 ? "te" : "ste");
    }
}

std::string EnglishYear(int year) {
    if (year >= 2000 && year < 2010)
        return year == 2000 ? "two thousand" : "two thousand " + EnglishCardinal(year - 2000);
    const std::string century = EnglishCardinal(year / 100);
    const int rest = year % 100;
    if (rest == 0) return century + " hundred";
    return century + (rest < 10 ? " oh " : " ") + EnglishCardinal(rest);
}

std::string GermanYear(int year) {
    const int rest = year % 100;
    const std::string end = rest == 0 ? "" : GermanCardinal(rest);
    return (year < 2000 ? GermanCardinal(year / 100) + "hundert" : "zweitausend") + end;
}

/// "eighty" becomes "eighties", "ten" "tens".
std::string EnglishPlural(const std::string& words) {
    return words.back() == 'y' ? words.substr(0, words.size() - 1) + "ies" : words + "s";
}

}  // namespace

std::string Cardinal(int number, Main main) {
    if (number < 0 || number > 99) return {};
    if (main == Main::English) return EnglishCardinal(number);
    return main == Main::German ? GermanCardinal(number) : std::string();
}

std::string Ordinal(int number, Main main) {
    if (number < 1 || number > 99) return {};
    if (main == Main::English) return EnglishOrdinal(number);
    return main == Main::German ? GermanOrdinal(number) : std::string();
}

std::string Year(int year, Main main) {
    if (year < 1100 || year > 2999) return {};
    if (main == Main::English) return EnglishYear(year);
    return main == Main::German && year < 2100 ? GermanYear(year) : std::string();
}

std::string Decade(int year, Main main) {
    if (year % 10 != 0 || year < 0 || (year >= 100 && year < 1100) || year > 2090) return {};
    if (main == Main::English) {
        if (year == 0) return "two thousands";
        return EnglishPlural(year < 100 ? EnglishCardinal(year) : EnglishYear(year));
    }
    if (main != Main::German) return {};
    if (year == 0) return "nuller";
    return (year < 100 ? GermanCardinal(year) : GermanYear(year)) + "er";
}

}  // namespace sorakaze::reading
