// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/LeadText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <optional>

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kEnglishCharacters = 400;
constexpr std::size_t kEnglishSentences = 2;
/// A longer text is thrown away whole by who asks.
constexpr std::size_t kJapaneseCharacters = 200;
/// How far behind a name its verb can stand.
constexpr std::size_t kVerbBytes = 1500;

using Words = std::initializer_list<std::string_view>;

bool IsOneOf(std::string_view word, Words words) {
    return std::ranges::find(words, word) != words.end();
}

std::size_t Characters(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

/// The bytes of the character that begins at `at`.
std::string_view CharacterAt(std::string_view text, std::size_t at) {
    std::size_t size = 1;
    while (at + size < text.size() && (text[at + size] & 0xC0) == 0x80) ++size;
    return text.substr(at, size);
}

enum class Bracket { None, OpensRound, ClosesRound, OpensSquare, ClosesSquare };

Bracket BracketOf(std::string_view character) {
    if (IsOneOf(character, {"(", "（"})) return Bracket::OpensRound;
    if (IsOneOf(character, {")", "）"})) return Bracket::ClosesRound;
    if (IsOneOf(character, {"[", "［"})) return Bracket::OpensSquare;
    if (IsOneOf(character, {"]", "］"})) return Bracket::ClosesSquare;
    return Bracket::None;
}

enum class Removal { Shortens, Overwrites };

/// Brackets go with all that is in them, one that has no partner goes alone. Straight quotes go too. What is
/// overwritten, marks of bold included, keeps everything else at its place.
std::string WithoutBrackets(std::string_view text, Removal removal = Removal::Shortens) {
    struct Open {
        Bracket bracket;
        std::size_t at;
    };
    std::vector<Open> open;
    std::string out;
    const bool overwrites = removal == Removal::Overwrites;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view character = CharacterAt(text, at);
        at += character.size();
        const Bracket bracket = BracketOf(character);
        const bool stays = bracket == Bracket::None && character != "\"" &&
                           !(overwrites && (character[0] == kBoldBegins || character[0] == kBoldEnds));
        const std::size_t begin = out.size();
        if (stays) {
            out += character;
        } else if (overwrites) {
            out.append(character.size(), ' ');
        }
        if (bracket == Bracket::OpensRound || bracket == Bracket::OpensSquare) {
            open.push_back({bracket, begin});
        } else if (bracket != Bracket::None) {
            const Bracket wanted =
                bracket == Bracket::ClosesRound ? Bracket::OpensRound : Bracket::OpensSquare;
            const auto partner = std::find_if(open.rbegin(), open.rend(), [&](const Open& candidate) {
                return candidate.bracket == wanted;
            });
            if (partner == open.rend()) continue;
            const std::size_t length = out.size() - partner->at;
            out.resize(partner->at);
            if (overwrites) out.append(length, ' ');
            open.erase(partner.base() - 1, open.end());
        }
    }
    return out;
}

/// True where a blank would stand before a mark that belongs to the word before it.
bool IsClosingMark(std::string_view text, std::size_t at) {
    const std::string_view mark = CharacterAt(text, at);
    if (IsOneOf(mark, {",", ".", ";", ":"})) return at + 1 == text.size() || text[at + 1] == ' ';
    return IsOneOf(mark, {"、", "。", "，"});
}

/// One blank where there were several, none before a comma, one comma where brackets left two.
std::string Tidied(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view character = CharacterAt(text, at);
        if (IsClosingMark(text, at)) {
            while (out.ends_with(' ')) out.pop_back();
            if (IsOneOf(character, {",", "、"}) && out.ends_with(character))
                out.resize(out.size() - character.size());
        }
        if (character != " " || (!out.empty() && !out.ends_with(' '))) out += character;
        at += character.size();
    }
    while (out.ends_with(' ')) out.pop_back();
    return out;
}

std::string WithoutMarks(std::string_view text) {
    std::string out(text);
    std::erase_if(out, [](char c) { return c == kBoldBegins || c == kBoldEnds; });
    return out;
}

std::string_view NextWord(std::string_view text, std::size_t& at) {
    while (at < text.size() && text[at] == ' ') ++at;
    const std::size_t begin = at;
    while (at < text.size() && text[at] != ' ') ++at;
    return text.substr(begin, at - begin);
}

bool IsVerb(std::string_view word) {
    return IsOneOf(word, {"is", "was", "are", "were", "has", "have", "had"});
}

/// Words that a clause of its own verb follows.
bool OpensClause(std::string_view word) {
    return IsOneOf(word, {"who", "which", "whose", "whom", "when", "where", "that", "while", "after",
                          "before", "because", "since", "until", "although", "though", "as", "if"});
}

/// Of a name that goes on, or of what else it is called: "Rogers Nelson, better known as Prince".
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

/// True if the full stop at `at` ends an abbreviation or an initial.
bool IsAbbreviation(std::string_view text, std::size_t at) {
    const std::size_t blank = text.rfind(' ', at);
    const std::string_view word = text.substr(blank == text.npos ? 0 : blank + 1, at - (blank + 1));
    return word.size() <= 1 || word.find('.') != word.npos ||
           IsOneOf(word, {"Jr",  "Sr",  "Dr",   "Mr",  "Mrs",  "Ms",  "St",   "Ste",  "Prof",   "Lt", "Sgt",
                          "Col", "Gen", "Capt", "Rev", "Mt",   "Ft",  "vs",   "feat", "ft",     "No", "no",
                          "Nos", "Vol", "Op",   "Inc", "Ltd",  "Co",  "Corp", "Bros", "approx", "ca", "et",
                          "al",  "Jan", "Feb",  "Aug", "Sept", "Oct", "Nov",  "Dec"});
}

bool EndsEnglish(std::string_view text, std::size_t at) {
    if (std::string_view(".!?").find(text[at]) == std::string_view::npos) return false;
    if (at + 1 == text.size()) return true;
    if (text[at + 1] != ' ') return false;
    const std::size_t next = text.find_first_not_of(' ', at + 1);
    if (next == text.npos) return true;
    return !std::islower(static_cast<unsigned char>(text[next])) &&
           !(text[at] == '.' && IsAbbreviation(text, at));
}

/// Whole sentences one by one, each with the blank before it.
class Sentences {
  public:
    /// No sentence ends within `name`: there are bands with an exclamation mark, or a full stop.
    Sentences(std::string_view text, std::string_view name, Edition edition)
        : rest_(text), name_(name), edition_(edition) {}

    /// Empty at the end, and for what no full stop follows.
    std::string_view Next() {
        int quotes = 0;
        for (std::size_t at = 0; at < rest_.size();) {
            if (!name_.empty() && rest_.substr(at).starts_with(name_)) {
                at += name_.size();
                continue;
            }
            const std::string_view character = CharacterAt(rest_, at);
            at += character.size();
            if (IsOneOf(character, {"「", "『"})) ++quotes;
            if (IsOneOf(character, {"」", "』"})) --quotes;
            const bool ends =
                edition_ == Edition::Japanese ? character == "。" && quotes <= 0 : EndsEnglish(rest_, at - 1);
            if (!ends) continue;
            const std::string_view sentence = rest_.substr(0, at);
            rest_.remove_prefix(at);
            return sentence;
        }
        return {};
    }

  private:
    std::string_view rest_;
    std::string_view name_;
    Edition edition_;
};

struct Predicate {
    /// Where the verb stands, or where the name ends that has none.
    std::size_t at;
    bool isKnown;
};

/// The verb of the first sentence, whose subject's name `text` follows: behind what is left of the name, or
/// behind a comma that follows it. What stands between may be any kind of phrase, and verbs within clauses
/// and of other subjects are none of the name's: if it isn't certain, there is none.
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
    /// False if the name's own verb can't come any more.
    bool Take(std::string_view word, bool pauses) {
        const bool isAs = word == "as" && !clause_;
        if (clause_) {
            needsVerb_ = needsVerb_ && !IsVerb(word);
        } else if (OpensClause(word) && !isAs) {
            clause_ = true;
            // "who" is mostly the subject itself; others have one of their own first, commas in it included.
            needsVerb_ = pauses || word != "who";
        } else if (inName_ || joins_) {
            return IsPartOfName(word);
        } else if (!phrase_ && IsOneOf(word, {"and", "but"})) {
            phrase_ = joins_ = true;
        } else {
            const bool isTitle = std::ranges::none_of(word, [](unsigned char c) { return std::islower(c); });
            phrase_ = phrase_ || !(isTitle || IsOneOf(word, {"Jr.", "Sr.", "also"}));
        }
        return true;
    }

    void Pause() {
        if (clause_ && needsVerb_) return;
        clause_ = phrase_ = joins_ = inName_ = false;
    }

    std::string_view text_;
    bool inName_ = true;      ///< before the first comma
    bool clause_ = false;     ///< in one that a word like "who" has opened
    bool needsVerb_ = false;  ///< the clause doesn't end at a comma yet
    bool phrase_ = false;     ///< behind a comma, and other words since
    bool joins_ = false;      ///< in a phrase that begins with "and"
};

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
    const Predicate predicate = PredicateSearch(text, title).Run();
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
    if (std::isalnum(static_cast<unsigned char>(told.front()))) told.insert(0, " ");
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
    return behindName + PredicateSearch(text.substr(behindName), "").Run().at;
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
