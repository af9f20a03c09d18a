// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/Hiragana.h"

#include <algorithm>

#include "base/Utf8.h"
#include "base/unicode/Normalization.h"
#include "speech/japanese/Characters.h"
#include "speech/japanese/CleanText.h"

namespace sorakaze::kotoeri {
namespace {

using namespace japanese;

bool IsJapanese(char32_t code) {
    return IsKana(code) || IsKanji(code);
}

bool IsOneOf(char32_t code, std::u32string_view set) {
    return set.find(code) != std::u32string_view::npos;
}

/// True for blanks and control characters, which separate words by themselves.
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

enum class Part { None, Word, Text, Opening, Closing, Blank };

Part PartOf(char32_t code) {
    if (IsBlank(code)) return Part::Blank;
    if (Opens(code)) return Part::Opening;
    if (Closes(code)) return Part::Closing;
    return Part::Text;
}

/// Builds the reading. There are commas around words that were read; what isn't Japanese keeps its form.
class Line {
  public:
    void Add(std::u32string_view text, Part part) {
        const bool touches = last_ == Part::None || last_ == Part::Opening || last_ == Part::Blank ||
                             part == Part::Closing || part == Part::Blank;
        if (!touches && (separated_ || last_ == Part::Word || part == Part::Word)) text_ += U',';
        text_ += text;
        last_ = part;
        separated_ = false;
    }
    /// A comma follows, where one is allowed.
    void Separate() { separated_ = true; }

    const std::u32string& Text() const { return text_; }

  private:
    std::u32string text_;
    Part last_ = Part::None;
    bool separated_ = false;
};

/// The length of the Japanese sentence that the text starts with, 0 if it starts with something else. Digits
/// belong to it only if something Japanese follows.
std::size_t SentenceLength(std::u32string_view text) {
    std::size_t length = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (IsJapanese(text[at]))
            length = at + 1;
        else if (!IsDigit(text[at]))
            break;
    }
    return length;
}

/// The length of other text that `text` starts with. Digits after letters belong to them.
std::size_t TextLength(std::u32string_view text) {
    std::size_t at = 0;
    while (at < text.size() && !IsJapanese(text[at]) && !IsSeparator(text[at]) &&
           PartOf(text[at]) == Part::Text)
        ++at;
    return at;
}

/// っ doubles the next sound of its word; at the end there is none.
std::u32string_view WithoutFinalStop(std::u32string_view word) {
    while (word.ends_with(U'っ')) word.remove_suffix(1);
    return word;
}

/// The text in composed characters: file names have accents and voicing marks apart. Stray bytes stay. The K
/// forms would turn ㈱ into a word in brackets and ① into a digit.
std::u32string Composed(std::u32string_view text) {
    std::u32string result;
    const auto isStray = [](char32_t code) { return code >= utf8::kStray; };
    while (!text.empty()) {
        const auto end = std::find_if(text.begin(), text.end(), isStray);
        const auto size = static_cast<std::size_t>(end - text.begin());
        result += unicode::Normalized(text.substr(0, size), unicode::NormalForm::Nfc);
        text.remove_prefix(size);
        for (; !text.empty() && isStray(text.front()); text.remove_prefix(1)) result += text.front();
    }
    return result;
}

std::u32string Cleaned(std::string_view bytes) {
    return CleanText(Composed(Decode(bytes)));
}

/// The words of a sentence in hiragana.
std::vector<std::u32string> Words(const Reader& reader, std::u32string_view sentence) {
    std::vector<std::u32string> words;
    for (ReadMorpheme& morpheme : reader.Read(sentence, Digits::Kept)) {
        std::replace(morpheme.reading.begin(), morpheme.reading.end(), U' ', U',');
        if (morpheme.joinsPrevious) {
            words.back() += morpheme.reading;
        } else {
            words.push_back(std::move(morpheme.reading));
        }
    }
    return words;
}

void AddSentence(Line& line, const Reader& reader, std::u32string_view sentence) {
    for (const auto& word : Words(reader, sentence)) {
        const std::u32string_view spoken = WithoutFinalStop(word);
        if (spoken.empty()) {
            line.Separate();
        } else {
            line.Add(spoken, Part::Word);
        }
    }
}

}  // namespace

std::string InHiragana(const Reader& reader, std::string_view bytes) {
    const std::u32string text = Cleaned(bytes);
    Line line;
    for (std::u32string_view rest = text; !rest.empty();) {
        std::size_t size = SentenceLength(rest);
        if (size > 0) {
            AddSentence(line, reader, rest.substr(0, size));
        } else if (IsSeparator(rest.front())) {
            size = 1;
            line.Separate();
        } else {
            size = std::max<std::size_t>(TextLength(rest), 1);
            line.Add(rest.substr(0, size), PartOf(rest.front()));
        }
        rest.remove_prefix(size);
    }
    // A title may consist of separators.
    return Encode(line.Text().empty() ? ToHiragana(text) : line.Text());
}

std::string InHiraganaWithoutDictionary(std::string_view text) {
    return Encode(ToHiragana(Cleaned(text)));
}

}  // namespace sorakaze::kotoeri
