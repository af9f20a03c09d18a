// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/Predicate.h"

#include <algorithm>
#include <cctype>

#include "gateway/encyclopaedia/ParagraphText.h"
#include "gateway/encyclopaedia/Sentences.h"

namespace sorakaze::gateway {
namespace {

/// How far after a name its verb is searched.
constexpr std::size_t kVerbBytes = 1500;

bool IsVerb(std::string_view word) {
    return IsOneOf(word, {"is", "was", "are", "were", "has", "have", "had"});
}

/// Words that begin a clause with a verb of its own.
bool OpensClause(std::string_view word) {
    return IsOneOf(word, {"who", "which", "whose", "whom", "when", "where", "that", "while", "after",
                          "before", "because", "since", "until", "although", "though", "as", "if"});
}

class PredicateSearch {
  public:
    PredicateSearch(std::string_view text, std::string_view title) : text_(text) {
        const std::string_view first = Sentences(text, title, Edition::English).Next();
        if (!first.empty()) text_ = first;
        text_ = text_.substr(0, kVerbBytes);
    }

    Predicate Run() {
        for (std::size_t at = 0; at < text_.size();) {
            std::string_view word = NextWord(text_, at);
            const std::size_t begin = at - word.size();
            const bool pauses = word.ends_with(',') || IsOneOf(word, {"–", "—", "-"});
            if (word.ends_with(',')) word.remove_suffix(1);
            if (!clause_ && !phrase_ && IsVerb(word)) return {begin, true};
            if (!Take(word, pauses)) return {begin, false};
            if (pauses) Pause();
        }
        return {text_.size(), false};
    }

  private:
    /// False if the name's own verb can't follow any more.
    bool Take(std::string_view word, bool pauses) {
        const bool isAs = word == "as" && !clause_;
        if (clause_) {
            needsVerb_ = needsVerb_ && !IsVerb(word);
        } else if (OpensClause(word) && !isAs) {
            clause_ = true;
            // "who" mostly is the subject of its clause. Other clauses have a subject first, which may hold
            // commas.
            needsVerb_ = pauses || word != "who";
        } else if (inName_ || isJoined_) {
            return IsPartOfName(word);
        } else if (!phrase_ && IsOneOf(word, {"and", "but"})) {
            phrase_ = isJoined_ = true;
        } else {
            const bool isTitle = std::ranges::none_of(word, [](unsigned char c) { return std::islower(c); });
            phrase_ = phrase_ || !(isTitle || IsOneOf(word, {"Jr.", "Sr.", "also"}));
        }
        return true;
    }

    void Pause() {
        if (clause_ && needsVerb_) return;
        clause_ = phrase_ = isJoined_ = inName_ = false;
    }

    std::string_view text_;
    bool inName_ = true;      ///< before the first comma
    bool clause_ = false;     ///< in one that a word like "who" began
    bool needsVerb_ = false;  ///< the clause can't end at a comma before its verb
    bool phrase_ = false;     ///< after a comma and words that are no title
    bool isJoined_ = false;   ///< in a phrase that begins with "and"
};

}  // namespace

bool IsPartOfName(std::string_view words) {
    for (std::size_t at = 0; at < words.size();) {
        const std::string_view word = NextWord(words, at);
        if (word.empty()) break;
        if (IsOneOf(word,
                    {"It", "He", "She", "They", "Its", "His", "Her", "Their", "This", "These", "One"})) {
            return false;
        }
        if (!std::islower(static_cast<unsigned char>(word[0]))) continue;
        if (!IsOneOf(
                word,
                {"and",    "or",           "the",           "de",         "da",       "di",        "del",
                 "der",    "den",          "van",           "von",        "la",       "le",        "el",
                 "al",     "bin",          "ibn",           "y",          "e",        "also",      "known",
                 "as",     "better",       "best",          "commonly",   "often",    "sometimes", "simply",
                 "called", "formerly",     "originally",    "previously", "stylized", "stylised",  "a.k.a.",
                 "aka",    "mononymously", "professionally"})) {
            return false;
        }
    }
    return true;
}

Predicate FindPredicate(std::string_view text, std::string_view title) {
    return PredicateSearch(text, title).Run();
}

}  // namespace sorakaze::gateway
