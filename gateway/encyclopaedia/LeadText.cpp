// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/LeadText.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <optional>

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "gateway/encyclopaedia/Predicate.h"
#include "gateway/encyclopaedia/Sentences.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kEnglishCharacters = 400;
constexpr std::size_t kEnglishSentences = 2;
/// The client discards a longer text as a whole.
constexpr std::size_t kJapaneseCharacters = 200;

struct AfterName {
    std::string text;
    /// The paragraph has nothing but the name before the text.
    bool nameComesFirst;
};

/// What follows the first bold text, or the title where nothing is bold.
std::optional<AfterName> FindAfterName(std::string_view paragraph, std::string_view title) {
    const std::string plain = WithoutBrackets(paragraph);
    const std::size_t end = plain.find(kBoldEnds);
    if (end != plain.npos) {
        const std::string before = WithTidyBlanks(WithoutBoldMarks(plain.substr(0, plain.find(kBoldBegins))));
        return AfterName{WithTidyBlanks(WithoutBoldMarks(std::string_view(plain).substr(end))),
                         IsPartOfName(before)};
    }
    const std::string tidied = WithTidyBlanks(WithoutBoldMarks(plain));
    if (!tidied.starts_with(title)) return {};
    return AfterName{tidied.substr(title.size()), true};
}

/// Ends a sentence that is too long at its last comma within the bound; empty without one.
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

/// Whether the text can follow a name and make a sentence with it.
bool CanFollowName(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == text.npos) return false;
    return text[first] == ',' || std::islower(static_cast<unsigned char>(text[first])) ||
           text.starts_with("'s ") || text.starts_with("’s ");
}

std::string EnglishSummary(const AfterName& afterName, std::string_view title) {
    std::string_view text = afterName.text;
    const Predicate predicate = FindPredicate(text, title);
    if (!afterName.nameComesFirst || (!predicate.isFound && !CanFollowName(text))) return {};
    if (predicate.isFound) text.remove_prefix(predicate.at);
    Sentences sentences(text, title, Edition::English);
    std::string summary(sentences.Next());
    if (CountCharacters(summary) > kEnglishCharacters)
        summary = CutAtComma(summary, kEnglishCharacters, ", ", ".");
    if (summary.empty()) return {};
    for (std::size_t count = 1; count < kEnglishSentences; ++count) {
        const std::string_view next = sentences.Next();
        if (CountCharacters(summary) + CountCharacters(next) > kEnglishCharacters) break;
        summary += next;
    }
    // A comma directly follows the name, a word doesn't.
    if (ascii::IsLetter(summary.front()) || ascii::IsDigit(summary.front())) summary.insert(0, " ");
    return summary;
}

std::size_t CountNonBlanks(std::string_view text) {
    return CountCharacters(text) - static_cast<std::size_t>(std::ranges::count(text, ' '));
}

/// Where the first sentence's topic ends: at a "は" with a comma after it.
std::size_t JapaneseTopic(std::string_view text) {
    const std::size_t topic = text.find("は、");
    return topic > text.find("。") ? text.npos : topic;
}

/// Where the paragraph stops naming its subject, as far as can be seen.
std::size_t SubjectEnd(std::string_view paragraph, Edition edition) {
    const std::string plain = WithoutBrackets(paragraph, Removal::Blanks);
    const std::string_view text = plain;
    const std::size_t end = std::min(text.find(". "), text.find("。"));
    if (edition == Edition::Japanese) return std::min(JapaneseTopic(text), end);
    const std::size_t afterBold = paragraph.find(kBoldEnds);
    if (afterBold == paragraph.npos) return end;
    return afterBold + FindPredicate(text.substr(afterBold), "").at;
}

std::string JapaneseSummary(std::string_view text, std::string_view title) {
    std::size_t topic = JapaneseTopic(text);
    if (topic == text.npos) {
        topic = text.find_first_not_of(' ');
        if (topic == text.npos || !text.substr(topic).starts_with("は")) return {};
    }
    Sentences sentences(text.substr(topic), title, Edition::Japanese);
    const std::size_t available = kJapaneseCharacters - std::min(CountNonBlanks(title), kJapaneseCharacters);
    std::string summary(sentences.Next());
    if (CountNonBlanks(summary) > available) return CutAtComma(summary, available, "、", "。");
    while (!summary.empty()) {
        const std::string_view next = sentences.Next();
        if (next.empty() || CountNonBlanks(summary) + CountNonBlanks(next) > available) break;
        summary += next;
    }
    return summary;
}

enum class Script { Latin, Han, Other };

/// Of the name's first letters that tell. A date has none of its own.
Script ScriptOf(std::string_view name) {
    bool hasHan = false;
    for (std::size_t at = 0; at < name.size();) {
        const auto [code, size] = utf8::Read(name, at);
        at += size;
        // Greek and all after it but punctuation, ideographs and wide Latin.
        const bool isHan = (code >= 0x3400 && code < 0xA000) || code == 0x3005;
        const bool isPlain = code < 0x370 || (code >= 0x1E00 && code < 0x1F00) ||
                             (code >= 0x2000 && code < 0x2E80) || (code >= 0x3000 && code < 0x3030) ||
                             code >= 0xFF00;
        hasHan = hasHan || isHan;
        if (!isHan && !isPlain) return Script::Other;
    }
    return hasHan ? Script::Han : Script::Latin;
}

/// Removes words that introduce another name; false if there are none.
bool TakeIntroduction(std::string_view& piece) {
    static constexpr std::string_view kIntroductions[] = {"also known as ",
                                                          "formerly known as ",
                                                          "better known as ",
                                                          "known as ",
                                                          "stylized as ",
                                                          "stylised as ",
                                                          "stylized in all caps as ",
                                                          "formerly ",
                                                          "previously ",
                                                          "originally ",
                                                          "abbreviated as ",
                                                          "also ",
                                                          "or ",
                                                          "born ",
                                                          "née ",
                                                          "né ",
                                                          "a.k.a. ",
                                                          "aka ",
                                                          "and ",
                                                          "本名",
                                                          "旧名",
                                                          "出生名",
                                                          "別名",
                                                          "旧芸名"};
    bool has = false;
    for (bool again = true; again;) {
        again = false;
        for (const std::string_view words : kIntroductions) {
            if (!piece.starts_with(words)) continue;
            piece.remove_prefix(words.size());
            has = again = true;
        }
    }
    return has;
}

/// Other spellings of the subject's name in brackets. A list of a band's members isn't one: its names are in
/// the article's own script, and nothing introduces them.
class BracketNames {
  public:
    BracketNames(Edition edition, std::vector<std::string>& names) : edition_(edition), names_(names) {}

    void Add(std::string_view text) {
        std::string piece;
        for (std::size_t at = 0; at <= text.size();) {
            const std::string_view character = at < text.size() ? CharacterAt(text, at) : std::string_view();
            if (character.empty() || IsOneOf(character, {",", ";", ":", "、", "，", "；", "：", "/", "／"})) {
                TakePiece(WithTidyBlanks(WithoutBoldMarks(piece)));
                isIntroduced_ = IsOneOf(character, {":", "："});
                piece.clear();
            } else {
                piece += character;
            }
            at += std::max<std::size_t>(character.size(), 1);
        }
        if (han_.size() == 1) names_.push_back(han_.front());
    }

  private:
    void TakePiece(std::string_view piece) {
        const bool isIntroduced = TakeIntroduction(piece) || isIntroduced_;
        if (piece.empty()) return;
        const Script script = ScriptOf(piece);
        const bool isForeign =
            script == Script::Other || (script == Script::Latin) == (edition_ == Edition::Japanese);
        if (edition_ == Edition::Japanese && script == Script::Han && !isIntroduced) {
            if (piece.find_first_of("0123456789") == piece.npos) han_.emplace_back(piece);
            return;
        }
        // A romanisation follows what it romanises.
        if (isForeign || isIntroduced || hasForeign_) names_.emplace_back(piece);
        hasForeign_ = hasForeign_ || isForeign;
    }

    const Edition edition_;
    std::vector<std::string>& names_;
    std::vector<std::string> han_;  ///< ideographs alone, without an introduction
    bool isIntroduced_ = false;
    bool hasForeign_ = false;
};

}  // namespace

std::vector<std::string> NamesIn(std::string_view paragraph, Edition edition) {
    std::vector<std::string> names;
    paragraph = paragraph.substr(0, SubjectEnd(paragraph, edition));
    for (std::size_t at = paragraph.find(kBoldBegins); at != paragraph.npos;
         at = paragraph.find(kBoldBegins, at + 1)) {
        const std::size_t end = std::min(paragraph.find(kBoldEnds, at), paragraph.size());
        names.push_back(WithoutBoldMarks(paragraph.substr(at, end - at)));
    }
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < paragraph.size();) {
        const std::string_view character = CharacterAt(paragraph, at);
        const Bracket bracket = BracketOf(character);
        if (bracket == Bracket::OpensRound && depth++ == 0) begin = at + character.size();
        if (bracket == Bracket::ClosesRound && depth > 0 && --depth == 0) {
            BracketNames(edition, names).Add(paragraph.substr(begin, at - begin));
        }
        at += character.size();
    }
    return names;
}

std::string Summary(std::string_view paragraph, std::string_view title, Edition edition) {
    const auto afterName = FindAfterName(paragraph, title);
    if (!afterName) return {};
    return edition == Edition::Japanese ? JapaneseSummary(afterName->text, title)
                                        : EnglishSummary(*afterName, title);
}

}  // namespace sorakaze::gateway
