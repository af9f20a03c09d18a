// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/SortNames.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "base/unicode/Transliteration.h"

namespace sorakaze::player {

namespace {

constexpr std::string_view kComma = ", ";

bool IsArticle(std::string_view word) {
    static constexpr std::string_view kArticles[] = {"the", "a",  "an",  "die", "der", "das",
                                                     "les", "le", "la",  "l'",  "los", "las",
                                                     "el",  "il", "gli", "de",  "het", "os"};
    return std::find(std::begin(kArticles), std::end(kArticles), ascii::Lowered(word)) != std::end(kArticles);
}

/// Kanji and Hangul, in which the family's name comes first.
bool HasFamilyNameFirst(std::string_view name) {
    for (std::size_t at = 0; at < name.size();) {
        const auto character = utf8::Read(name, at);
        const bool isKanji = character.code >= 0x3400 && character.code <= 0x9FFF;
        const bool isHiragana = character.code >= 0x3041 && character.code <= 0x3096;
        const bool isHangul = character.code >= 0xAC00 && character.code <= 0xD7A3;
        if (isKanji || isHiragana || isHangul) return true;
        at += character.size;
    }
    return false;
}

/// How many letters of one are in the other in the same order, of the first few: enough to tell whether a
/// name is the beginning of another text.
std::size_t Likeness(const std::string& text, const std::string& word) {
    constexpr std::size_t kLetters = 5;
    std::size_t found = 0, at = 0;
    for (const char letter : word.substr(0, kLetters)) {
        const auto next = text.substr(0, kLetters).find(letter, at);
        if (next == std::string::npos) continue;
        at = next + 1;
        ++found;
    }
    return found;
}

enum class Order { FirstLast, LastFirst };

Order OrderIn(const std::string& name, const std::string& last, const std::string& first) {
    if (HasFamilyNameFirst(name)) return Order::LastFirst;
    const std::string latin = unicode::ToPlainLatin(name);
    const bool startsWithLast =
        Likeness(latin, ascii::Lowered(last)) > Likeness(latin, ascii::Lowered(first));
    return startsWithLast ? Order::LastFirst : Order::FirstLast;
}

struct Person {
    std::string last, first, suffix;
};

bool IsSuffix(std::string_view word) {
    static constexpr std::string_view kSuffixes[] = {"jr.", "jr", "sr.", "sr", "ii", "iii"};
    return std::find(std::begin(kSuffixes), std::end(kSuffixes), ascii::Lowered(word)) != std::end(kSuffixes);
}

/// "Last, First" or "Last, First, Jr."; the last name is empty for anything else.
Person PersonOf(std::string_view name) {
    Person person;
    const auto comma = name.find(kComma);
    if (comma == std::string_view::npos) return person;
    const std::string_view rest = name.substr(comma + kComma.size());
    const auto second = rest.find(kComma);
    const std::string_view first = rest.substr(0, second);
    if (second != std::string_view::npos && !IsSuffix(rest.substr(second + kComma.size()))) return person;
    // "Tyler, The Creator"; "Now, Now".
    const auto blank = first.find(' ');
    const bool isTitle = blank != std::string_view::npos && IsArticle(first.substr(0, blank));
    if (first.empty() || isTitle || first == name.substr(0, comma)) return person;
    person = {std::string(name.substr(0, comma)), std::string(first), {}};
    if (second != std::string_view::npos) person.suffix = rest.substr(second + kComma.size());
    return person;
}

std::string Spoken(const Person& person, Order order) {
    const std::string name =
        order == Order::LastFirst ? person.last + ' ' + person.first : person.first + ' ' + person.last;
    return person.suffix.empty() ? name : name + ' ' + person.suffix;
}

struct Joined {
    std::string_view name;
    std::string_view joint;  ///< what follows the name
};

std::vector<Joined> SplitAtJoints(std::string_view names) {
    static constexpr std::string_view kJoints[] = {" & ", " and ", "; ", " / ", " feat. ", " with ", " x "};
    std::vector<Joined> parts;
    for (;;) {
        auto end = std::string_view::npos;
        std::string_view joint;
        for (const std::string_view candidate : kJoints)
            if (const auto at = names.find(candidate); at < end) {
                end = at;
                joint = candidate;
            }
        parts.push_back({names.substr(0, end), joint});
        if (end == std::string_view::npos) return parts;
        names.remove_prefix(end + joint.size());
    }
}

}  // namespace

std::string WithArticleInFront(const std::string& name) {
    const auto comma = name.rfind(kComma);
    if (comma == std::string::npos || comma == 0) return name;
    const std::string article = name.substr(comma + kComma.size());
    if (!IsArticle(article)) return name;
    return article + (article.ends_with('\'') ? "" : " ") + name.substr(0, comma);
}

std::string SpokenSortName(const std::string& sort, const std::string& name) {
    if (const std::string turned = WithArticleInFront(sort); turned != sort) return turned;
    const std::vector<Joined> parts = SplitAtJoints(sort);
    std::string spoken;
    for (const Joined& part : parts) {
        const Person person = PersonOf(part.name);
        // A group's name: of several people each has a comma.
        if (person.last.empty()) return sort;
        spoken += Spoken(person, OrderIn(name, person.last, person.first));
        spoken += part.joint == "; " || part.joint == " / " ? kComma : part.joint;
    }
    return spoken;
}

}  // namespace sorakaze::player
