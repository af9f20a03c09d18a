// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/LeadText.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <optional>

#include "base/Ascii.h"
#include "gateway/Predicate.h"
#include "gateway/Sentences.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kEnglishCharacters = 400;
constexpr std::size_t kEnglishSentences = 2;
/// A longer text is thrown away whole by who asks.
constexpr std::size_t kJapaneseCharacters = 200;

struct Behind {
    std::string text;
    /// Nothing but the name stands before the text.
    bool beginsSo;
};

/// What stands behind the first name in bold, or behind the title where nothing is bold.
std::optional<Behind> BehindName(std::string_view paragraph, std::string_view title) {
    const std::string plain = WithoutBrackets(paragraph);
    const std::size_t end = plain.find(kBoldEnds);
    if (end != plain.npos) {
        const std::string before = Tidied(WithoutMarks(plain.substr(0, plain.find(kBoldBegins))));
        return Behind{Tidied(WithoutMarks(std::string_view(plain).substr(end))), IsPartOfName(before)};
    }
    const std::string tidied = Tidied(WithoutMarks(plain));
    if (!tidied.starts_with(title)) return {};
    return Behind{tidied.substr(title.size()), true};
}

/// A sentence that is too long ends at its last comma within the bound.
std::string CutAtComma(std::string_view sentence, std::size_t characters, std::string_view comma,
                       std::string_view stop) {
    std::size_t end = 0;
    std::size_t counted = 0;
    for (std::size_t at = 0; at < sentence.size();) {
        const std::string_view character = CharacterAt(sentence, at);
        if (++counted >= characters) break;
        if (sentence.substr(at).starts_with(comma)) end = at;
        at += character.size();
    }
    return end == 0 ? std::string() : std::string(sentence.substr(0, end)) + std::string(stop);
}

/// Whether the announcer's name can stand before the whole of a sentence that this is the end of.
bool GoesOn(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == text.npos) return false;
    return text[first] == ',' || std::islower(static_cast<unsigned char>(text[first])) ||
           text.starts_with("'s ") || text.starts_with("’s ");
}

std::string ToldInEnglish(const Behind& behind, std::string_view title) {
    std::string_view text = behind.text;
    const Predicate predicate = FindPredicate(text, title);
    if (!behind.beginsSo || (!predicate.isKnown && !GoesOn(text))) return {};
    if (predicate.isKnown) text.remove_prefix(predicate.at);
    Sentences sentences(text, title, Edition::English);
    std::string told(sentences.Next());
    if (Characters(told) > kEnglishCharacters) told = CutAtComma(told, kEnglishCharacters, ", ", ".");
    if (told.empty()) return {};
    for (std::size_t count = 1; count < kEnglishSentences; ++count) {
        const std::string_view next = sentences.Next();
        if (Characters(told) + Characters(next) > kEnglishCharacters) break;
        told += next;
    }
    // A comma stands next to the name, a word doesn't.
    if (ascii::IsLetter(told.front()) || ascii::IsDigit(told.front())) told.insert(0, " ");
    return told;
}

std::size_t WithoutBlanks(std::string_view text) {
    return Characters(text) - static_cast<std::size_t>(std::ranges::count(text, ' '));
}

/// Where the first sentence's subject ends: at "は" with a comma behind it.
std::size_t JapaneseTopic(std::string_view text) {
    const std::size_t topic = text.find("は、");
    return topic > text.find("。") ? text.npos : topic;
}

/// How much of a paragraph names its subject, as far as can be told.
std::size_t SubjectEnd(std::string_view paragraph, Edition edition) {
    const std::string plain = WithoutBrackets(paragraph, Removal::Overwrites);
    const std::string_view text = plain;
    const std::size_t end = std::min(text.find(". "), text.find("。"));
    if (edition == Edition::Japanese) return std::min(JapaneseTopic(text), end);
    const std::size_t behindName = paragraph.find(kBoldEnds);
    if (behindName == paragraph.npos) return end;
    return behindName + FindPredicate(text.substr(behindName), "").at;
}

std::string ToldInJapanese(std::string_view text, std::string_view title) {
    std::size_t topic = JapaneseTopic(text);
    if (topic == text.npos) {
        topic = text.find_first_not_of(' ');
        if (topic == text.npos || !text.substr(topic).starts_with("は")) return {};
    }
    Sentences sentences(text.substr(topic), title, Edition::Japanese);
    const std::size_t left = kJapaneseCharacters - std::min(WithoutBlanks(title), kJapaneseCharacters);
    std::string told(sentences.Next());
    if (WithoutBlanks(told) > left) return CutAtComma(told, left, "、", "。");
    while (!told.empty()) {
        const std::string_view next = sentences.Next();
        if (next.empty() || WithoutBlanks(told) + WithoutBlanks(next) > left) break;
        told += next;
    }
    return told;
}

void AddPieces(std::string_view text, std::vector<std::string>& names) {
    std::string piece;
    for (std::size_t at = 0; at <= text.size();) {
        const std::string_view character = at < text.size() ? CharacterAt(text, at) : std::string_view();
        if (character.empty() || IsOneOf(character, {",", ";", ":", "、", "，", "；", "：", "/", "／"})) {
            if (!piece.empty()) names.push_back(WithoutMarks(piece));
            piece.clear();
        } else {
            piece += character;
        }
        at += std::max<std::size_t>(character.size(), 1);
    }
}

}  // namespace

std::vector<std::string> NamesIn(std::string_view paragraph, Edition edition) {
    std::vector<std::string> names;
    paragraph = paragraph.substr(0, SubjectEnd(paragraph, edition));
    for (std::size_t at = paragraph.find(kBoldBegins); at != paragraph.npos;
         at = paragraph.find(kBoldBegins, at + 1)) {
        const std::size_t end = std::min(paragraph.find(kBoldEnds, at), paragraph.size());
        names.push_back(WithoutMarks(paragraph.substr(at, end - at)));
    }
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < paragraph.size();) {
        const std::string_view character = CharacterAt(paragraph, at);
        const Bracket bracket = BracketOf(character);
        if (bracket == Bracket::OpensRound && depth++ == 0) begin = at + character.size();
        if (bracket == Bracket::ClosesRound && depth > 0 && --depth == 0) {
            AddPieces(paragraph.substr(begin, at - begin), names);
            break;
        }
        at += character.size();
    }
    return names;
}

std::string Told(std::string_view paragraph, std::string_view title, Edition edition) {
    const auto behind = BehindName(paragraph, title);
    if (!behind) return {};
    return edition == Edition::Japanese ? ToldInJapanese(behind->text, title) : ToldInEnglish(*behind, title);
}

}  // namespace sorakaze::gateway
