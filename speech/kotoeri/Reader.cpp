// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/Reader.h"

#include <algorithm>
#include <optional>

#include "speech/kotoeri/Characters.h"
#include "speech/kotoeri/Lexicon.h"
#include "speech/kotoeri/TidyText.h"
#include "speech/kotoeri/Words.h"

namespace sorakaze::kotoeri {
namespace {

/// No title has a sentence of this length; what is longer is cut, so that the dictionary's work stays
/// bounded.
constexpr std::size_t kLongestSentence = 400;

bool IsJapanese(char32_t code) {
    return IsKana(code) || IsKanji(code) || IsDigit(code);
}

bool IsOneOf(char32_t code, std::u32string_view set) {
    return set.find(code) != std::u32string_view::npos;
}

/// A blank or a control character: it parts words by itself.
bool IsBlank(char32_t code) {
    return code <= U' ';
}
bool IsSeparator(char32_t code) {
    return code == U'・' || code == U'\u3000';
}
bool Opens(char32_t code) {
    return IsOneOf(code, U"「『（【〈《［｛〔“‘([{");
}
bool Closes(char32_t code) {
    return IsOneOf(code, U"」』）】〉》］｝〕”’)]}、。，．！？…‥：；!?,.:;");
}

/// The reading as it grows: knows where the next word needs a comma before it.
class Line {
  public:
    void AddWord(std::u32string_view word) { Add(word, true, true); }
    void AddMark(char32_t mark) {
        Add({&mark, 1}, !Closes(mark) && !IsBlank(mark), !Opens(mark) && !IsBlank(mark));
    }
    void Part() { partBefore_ = true; }

    const std::u32string& Text() const { return text_; }

  private:
    void Add(std::u32string_view piece, bool commaBefore, bool commaAfter) {
        if (commaBefore && partBefore_ && !text_.empty()) text_ += U',';
        text_ += piece;
        partBefore_ = commaAfter;
    }

    std::u32string text_;
    bool partBefore_ = false;
};

/// How much of an overlong sentence to read first: up to where kanji follow kana, or all that is allowed.
std::size_t CutLength(std::u32string_view sentence) {
    if (sentence.size() <= kLongestSentence) return sentence.size();
    for (std::size_t at = kLongestSentence; at > kLongestSentence / 2; --at) {
        if (IsHiragana(sentence[at - 1]) && IsKanji(sentence[at])) return at;
    }
    return kLongestSentence;
}

/// With full-width digits, which the dictionary takes for numbers.
std::u32string Widened(std::u32string_view text) {
    std::u32string wide(text);
    for (char32_t& code : wide) {
        if (code >= U'0' && code <= U'9') code += U'０' - U'0';
    }
    return wide;
}

/// The sentence with each 々 that the dictionary knows no word with spelt out as the kanji before it; empty
/// where there is none.
std::optional<std::u32string> WithoutRepetitions(const std::vector<Morpheme>& morphemes) {
    std::u32string sentence;
    bool found = false;
    for (const Morpheme& morpheme : morphemes) {
        for (const char32_t code : morpheme.surface) {
            const bool repeats = morpheme.surface.front() == U'々' && code == U'々' && !sentence.empty();
            found = found || repeats;
            sentence += repeats ? sentence.back() : code;
        }
    }
    return found ? std::optional(sentence) : std::nullopt;
}

}  // namespace

Reader::Reader(const std::filesystem::path& folder, Lexicon lexicon)
    : dictionary_(folder), lexicon_(lexicon) {}

std::vector<std::u32string> Reader::ReadSentence(std::u32string_view sentence) const {
    std::vector<Given> given;
    for (std::size_t at = 0; at < sentence.size() && lexicon_ == Lexicon::Used;) {
        const auto entry = EntryAtBeginning(sentence.substr(at));
        if (entry) given.push_back({at, entry->surface.size(), std::u32string(entry->reading)});
        at += entry ? entry->surface.size() : 1;
    }
    std::vector<Morpheme> morphemes = dictionary_.Cut(Widened(sentence), given);
    if (const auto repeated = WithoutRepetitions(morphemes)) morphemes = dictionary_.Cut(*repeated, given);
    std::size_t at = 0;
    for (Morpheme& morpheme : morphemes) {
        if (IsDigit(morpheme.surface.front()))
            morpheme.surface = sentence.substr(at, morpheme.surface.size());
        at += morpheme.surface.size();
    }
    return Words(morphemes, lexicon_);
}

std::string Reader::Read(std::string_view bytes) const {
    const std::u32string text = TidyText(Decode(bytes));
    Line line;
    for (std::size_t at = 0; at < text.size();) {
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at);
        if (IsJapanese(text[at])) {
            const auto end = std::find_if_not(begin, text.end(), IsJapanese);
            const std::u32string_view all(&text[at], static_cast<std::size_t>(end - begin));
            const std::u32string_view sentence = all.substr(0, CutLength(all));
            for (const auto& word : ReadSentence(sentence)) line.AddWord(word);
            at += sentence.size();
        } else if (IsSeparator(text[at])) {
            line.Part();
            ++at;
        } else if (IsBlank(text[at]) || Opens(text[at]) || Closes(text[at])) {
            line.AddMark(text[at++]);
        } else {
            const auto end = std::find_if(begin, text.end(), [](char32_t code) {
                return IsJapanese(code) || IsSeparator(code) || IsBlank(code) || Opens(code) || Closes(code);
            });
            line.AddWord({&text[at], static_cast<std::size_t>(end - begin)});
            at += static_cast<std::size_t>(end - begin);
        }
    }
    // Nothing but separators is a title too.
    return Encode(line.Text().empty() ? text : line.Text());
}

}  // namespace sorakaze::kotoeri
