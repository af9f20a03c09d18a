// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/Reader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "speech/kotoeri/Characters.h"
#include "speech/kotoeri/TidyText.h"
#include "speech/kotoeri/WithEntries.h"
#include "speech/kotoeri/Words.h"

namespace sorakaze::kotoeri {
namespace {

/// No title has a sentence of this length; what is longer is cut, so that the dictionary's work stays
/// bounded.
constexpr std::size_t kLongestSentence = 400;

bool IsJapanese(char32_t code) {
    return IsKana(code) || IsKanji(code);
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

enum class Piece { None, Word, Text, Opening, Closing, Blank };

Piece PieceOf(char32_t code) {
    if (IsBlank(code)) return Piece::Blank;
    if (Opens(code)) return Piece::Opening;
    if (Closes(code)) return Piece::Closing;
    return Piece::Text;
}

/// The reading as it grows. Commas stand around words that were read; what is no Japanese keeps its form.
class Line {
  public:
    void Add(std::u32string_view text, Piece piece) {
        const bool touches = last_ == Piece::None || last_ == Piece::Opening || last_ == Piece::Blank ||
                             piece == Piece::Closing || piece == Piece::Blank;
        if (!touches && (parted_ || last_ == Piece::Word || piece == Piece::Word)) text_ += U',';
        text_ += text;
        last_ = piece;
        parted_ = false;
    }
    /// A comma follows, wherever one can stand.
    void Part() { parted_ = true; }

    const std::u32string& Text() const { return text_; }

  private:
    std::u32string text_;
    Piece last_ = Piece::None;
    bool parted_ = false;
};

/// The length of the Japanese sentence that the text begins with, 0 where it begins with something else; of
/// an overlong one a little more than is read at once. Digits belong to it, but only where something Japanese
/// follows.
std::size_t SentenceLength(std::u32string_view text) {
    std::size_t length = 0;
    for (std::size_t at = 0; at < std::min(text.size(), kLongestSentence + 1); ++at) {
        if (IsJapanese(text[at]))
            length = at + 1;
        else if (!IsDigit(text[at]))
            break;
    }
    return length;
}

/// The length of what else the text begins with. Digits behind letters are theirs.
std::size_t TextLength(std::u32string_view text) {
    std::size_t at = 0;
    while (at < text.size() && !IsJapanese(text[at]) && !IsSeparator(text[at]) &&
           PieceOf(text[at]) == Piece::Text)
        ++at;
    return at;
}

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

/// っ doubles the sound that follows in its word. Where none does, it has none.
std::u32string_view WithoutFinalStop(std::u32string_view word) {
    while (word.ends_with(U'っ')) word.remove_suffix(1);
    return word;
}

}  // namespace

Reader::Reader(const std::filesystem::path& folder, Lexicon lexicon)
    : dictionary_(folder), lexicon_(lexicon) {}

std::vector<std::u32string> Reader::ReadSentence(std::u32string_view sentence) const {
    std::vector<Morpheme> morphemes = dictionary_.Cut(Widened(sentence));
    if (const auto repeated = WithoutRepetitions(morphemes)) morphemes = dictionary_.Cut(*repeated);
    if (lexicon_ == Lexicon::Used) morphemes = WithEntries(std::move(morphemes));
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
    for (std::u32string_view rest = text; !rest.empty();) {
        std::size_t size = 1;
        if (const std::size_t length = SentenceLength(rest); length > 0) {
            size = CutLength(rest.substr(0, length));
            for (const auto& word : ReadSentence(rest.substr(0, size))) {
                const std::u32string_view spoken = WithoutFinalStop(word);
                if (spoken.empty()) {
                    line.Part();
                } else {
                    line.Add(spoken, Piece::Word);
                }
            }
        } else if (IsSeparator(rest.front())) {
            line.Part();
        } else {
            size = std::max<std::size_t>(TextLength(rest), 1);
            line.Add(rest.substr(0, size), PieceOf(rest.front()));
        }
        rest.remove_prefix(size);
    }
    // Nothing but separators is a title too.
    return Encode(line.Text().empty() ? ToHiragana(text) : line.Text());
}

std::string ReadWithoutDictionary(std::string_view text) {
    return Encode(ToHiragana(TidyText(Decode(text))));
}

}  // namespace sorakaze::kotoeri
