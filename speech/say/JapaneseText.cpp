// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/JapaneseText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

#include "base/Utf8.h"
#include "speech/say/JapaneseNumbers.h"

namespace sorakaze::speech {
namespace {

using End = SpokenClause::End;
using Language = SpokenPart::Language;

/// The character at the front of valid UTF-8, and its length; an odd byte is a character of its own.
std::pair<char32_t, std::size_t> Front(std::string_view text) {
    const auto [character, size] = utf8::Read(text, 0);
    return {character, size};
}

void Append(std::string& text, char32_t character) {
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    if (character < 0x800) {
        text += static_cast<char>(0xC0U | (character >> 6U));
    } else {
        text += static_cast<char>(0xE0U | (character >> 12U));
        text += static_cast<char>(0x80U | ((character >> 6U) & 0x3FU));
    }
    text += static_cast<char>(0x80U | (character & 0x3FU));
}

/// U+FF61 to U+FF9F.
constexpr std::u32string_view kHalfWidth =
    U"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホマミムメモ"
    U"ヤユヨラリル"
    U"レロワン゛゜";

/// The kana with the mark that a half-width text puts behind it.
char32_t WithMark(char32_t kana, char32_t mark) {
    if (mark == U'ﾞ' && kana == U'ウ') return U'ヴ';
    const bool voices = (kana >= U'カ' && kana <= U'ト' && kana != U'ッ') || (kana >= U'ハ' && kana <= U'ホ');
    if (mark == U'ﾞ' && voices) return kana + 1;
    if (mark == U'ﾟ' && kana >= U'ハ' && kana <= U'ホ') return kana + 2;
    return 0;
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

bool IsLatinLetter(char32_t character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= 0xC0 && character <= 0x24F && character != 0xD7 && character != 0xF7);
}

bool IsKana(char32_t character) {
    return (character >= 0x3041 && character <= 0x3096) || (character >= 0x30A1 && character <= 0x30FA) ||
           character == U'ー';
}

bool IsKanji(char32_t character) {
    return (character >= 0x3400 && character <= 0x9FFF) || character == U'々' || character == U'〇' ||
           (character >= 0xF900 && character <= 0xFAFF) || character >= 0x20000;
}

bool BeginsLatin(std::string_view text) {
    return !text.empty() && IsLatinLetter(Front(text).first);
}

/// Kana in katakana; all else is left out.
std::string Katakana(std::string_view text) {
    std::string katakana;
    while (!text.empty()) {
        const auto [character, size] = Front(text);
        text.remove_prefix(size);
        if (!IsKana(character)) continue;
        Append(katakana, character <= 0x3096 ? character + 0x60 : character);
    }
    return katakana;
}

/// What a mark does to the flow of speech; nothing for a character that is no mark.
std::optional<End> PauseOf(char32_t mark) {
    constexpr std::u32string_view kSentences = U"。．.!！♪♫\n";
    constexpr std::u32string_view kCommas = U"、，,;；:：…‥—―–~〜～()（）[]［］{}【】〔〕<>〈〉《》|｜/／";
    constexpr std::u32string_view kNames = U"「」『』\"“”";
    if (mark == '?' || mark == U'？') return End::Question;
    if (kSentences.find(mark) != std::u32string_view::npos) return End::Sentence;
    if (kCommas.find(mark) != std::u32string_view::npos) return End::Comma;
    if (kNames.find(mark) != std::u32string_view::npos) return End::Name;
    return {};
}

/// Signs that are read as a word.
std::string_view WordOf(std::string_view sign) {
    constexpr std::pair<std::string_view, std::string_view> kSigns[] = {
        {"&", "アンド"}, {"%", "パーセント"}, {"+", "プラス"}, {"@", "アット"},
        {"$", "ドル"},   {"¥", "エン"},       {"℃", "ド"},     {"×", "カケル"}};
    const auto* found = std::find_if(std::begin(kSigns), std::end(kSigns),
                                     [&](const auto& row) { return row.first == sign; });
    return found == std::end(kSigns) ? std::string_view() : found->second;
}

/// Builds the clauses from the front to the end.
class Builder {
  public:
    /// A word of its own, or the rest of the phrase before it.
    void Japanese(const std::string& katakana, bool attached) {
        if (katakana.empty()) return;
        std::string& text = Part(Language::Japanese).text;
        if (!text.empty() && !attached && !holdsPhrase_) text += ' ';
        holdsPhrase_ = false;
        text += katakana;
    }
    /// What comes next belongs to the same phrase.
    void HoldPhrase() { holdsPhrase_ = true; }
    void Latin(std::string_view words) {
        std::string& text = Part(Language::Latin).text;
        if (!text.empty()) text += ' ';
        text += words;
    }
    void Pause(End end) {
        holdsPhrase_ = false;
        if (!open_.parts.empty()) {
            open_.end = end;
            clauses_.push_back(std::exchange(open_, {}));
        } else if (!clauses_.empty()) {
            clauses_.back().end = std::max(clauses_.back().end, end);
        }
    }
    std::vector<SpokenClause> Finish() {
        Pause(End::Sentence);
        return std::move(clauses_);
    }

  private:
    SpokenPart& Part(Language language) {
        if (open_.parts.empty() || open_.parts.back().language != language) {
            open_.parts.push_back({language, ""});
        }
        return open_.parts.back();
    }

    SpokenClause open_;
    std::vector<SpokenClause> clauses_;
    bool holdsPhrase_ = false;
};

/// Walks over the morphemes once.
class Walk {
  public:
    Walk(const std::string& text, const std::vector<Morpheme>& morphemes)
        : text_(text), morphemes_(morphemes) {}

    std::vector<SpokenClause> Run() {
        while (at_ < morphemes_.size()) {
            const bool taken = TakeLatin() || TakeNumber();
            if (!taken) TakeWord(morphemes_[at_++]);
        }
        return builder_.Finish();
    }

  private:
    static bool IsNumber(const Morpheme& morpheme) { return !ReadNumber(morpheme.surface).empty(); }
    static bool IsDigits(const Morpheme& morpheme) {
        return std::all_of(morpheme.surface.begin(), morpheme.surface.end(), IsDigit);
    }
    bool Touches(std::size_t index) const {
        return index > 0 && index < morphemes_.size() && morphemes_[index - 1].end == morphemes_[index].begin;
    }
    bool IsLatin(std::size_t index) const {
        return index < morphemes_.size() && BeginsLatin(morphemes_[index].surface);
    }
    /// A mark within foreign names: "Let's", "AC/DC", "Simon & Garfunkel".
    bool IsLatinMark(std::size_t index) const {
        constexpr std::string_view kMarks = "'&.-!/,:+*$#’";
        return index < morphemes_.size() && kMarks.find(morphemes_[index].surface) != std::string_view::npos;
    }

    /// Letters, and the digits and marks between and behind them, up to the next Japanese word.
    bool TakeLatin() {
        std::size_t next = at_;
        // "10cc", "2Pac", but not the year before a title.
        if (IsDigits(morphemes_[next]) && IsLatin(next + 1) && Touches(next + 1)) ++next;
        if (!IsLatin(next)) return false;
        std::size_t end = next + 1;  // behind the last letter or digit
        for (next = end; next < morphemes_.size(); ++next) {
            if (IsLatin(next)) {
                end = next + 1;
            } else if (IsDigits(morphemes_[next])) {
                if (!IsCounted(next)) end = next + 1;
            } else if (!IsLatinMark(next) || next - end >= 2) {
                break;
            }
        }
        builder_.Latin(std::string_view(text_).substr(morphemes_[at_].begin,
                                                      morphemes_[end - 1].end - morphemes_[at_].begin));
        at_ = end;
        afterMonth_ = false;
        return true;
    }

    /// Whether a counter in kanji stands behind the number: "CD2枚".
    bool IsCounted(std::size_t index) const {
        return Touches(index + 1) && IsKanji(Front(morphemes_[index + 1].surface).first);
    }

    bool TakeNumber() {
        std::size_t end = at_;
        std::string number;
        while (end < morphemes_.size() && (end == at_ || Touches(end))) {
            const Morpheme& morpheme = morphemes_[end];
            const bool mark = morpheme.surface == "," || morpheme.surface == ".";
            const bool between = mark && end > at_ && Touches(end + 1) && IsDigits(morphemes_[end - 1]) &&
                                 IsDigits(morphemes_[end + 1]);
            const bool part =
                between || (IsNumber(morpheme) && (morpheme.detail == "数" || IsDigits(morpheme)));
            if (!part) break;
            number += morpheme.surface;
            ++end;
        }
        std::string kana = ReadNumber(number);
        if (end == at_ || kana.empty()) return false;
        const bool clock = end + 1 < morphemes_.size() && morphemes_[end].surface == ":" && Touches(end) &&
                           Touches(end + 1) && IsDigits(morphemes_[end + 1]);
        if (clock) {
            kana = ReadCounted(number, "時", "ジ", false);
            builder_.Japanese(kana, false);
            at_ = end + 2;
            builder_.Japanese(ReadCounted(morphemes_[end + 1].surface, "分", "フン", false), false);
            return true;
        }
        at_ = end;
        TakeCounter(number, kana);
        return true;
    }

    void TakeCounter(const std::string& number, std::string kana) {
        const bool counted = Touches(at_) && IsCounter(morphemes_[at_]);
        afterMonth_ = afterMonth_ && counted;
        if (counted) {
            const Morpheme& counter = morphemes_[at_++];
            kana =
                ReadCounted(number, counter.surface,
                            counter.pronunciation.empty() ? Katakana(counter.surface) : counter.pronunciation,
                            afterMonth_);
            afterMonth_ = counter.surface == "月";
        }
        builder_.Japanese(kana, false);
    }

    static bool IsCounter(const Morpheme& morpheme) {
        if (morpheme.surface == "%" || morpheme.surface == "つ") return true;
        return morpheme.kind == "名詞" && IsKanji(Front(morpheme.surface).first) &&
               (morpheme.detail == "接尾" || morpheme.detail == "一般" || morpheme.detail == "副詞可能");
    }

    void TakeWord(const Morpheme& word) {
        const char32_t first = Front(word.surface).first;
        afterMonth_ = false;
        std::string kana = Katakana(word.pronunciation.empty() ? word.surface : word.pronunciation);
        if (kana.empty()) {
            TakeMarks(word.surface);
            return;
        }
        if (word.kind == "助詞" && word.surface == "を") kana = "オ";
        builder_.Japanese(kana, first == U'ー' || BelongsToPhrase(word));
        if (word.kind == "接頭詞") builder_.HoldPhrase();
    }

    /// Signs come in bunches where the dictionary knows none of them.
    void TakeMarks(std::string_view marks) {
        while (!marks.empty()) {
            const auto [mark, size] = Front(marks);
            const std::string_view sign = WordOf(marks.substr(0, size));
            if (const auto pause = PauseOf(mark)) builder_.Pause(*pause);
            if (!sign.empty()) builder_.Japanese(std::string(sign), false);
            marks.remove_prefix(size);
        }
    }

    /// Particles, endings and the like are spoken in one breath with the word before them.
    static bool BelongsToPhrase(const Morpheme& word) {
        return word.kind == "助詞" || word.kind == "助動詞" || word.detail == "接尾" ||
               word.detail == "非自立" || word.conjugation == "サ変・スル";
    }

    const std::string& text_;
    const std::vector<Morpheme>& morphemes_;
    std::size_t at_ = 0;
    bool afterMonth_ = false;
    Builder builder_;
};

}  // namespace

std::string OrdinaryWidths(std::string_view text) {
    std::string ordinary;
    ordinary.reserve(text.size());
    while (!text.empty()) {
        auto [character, size] = Front(text);
        const std::string_view bytes = text.substr(0, size);
        text.remove_prefix(size);
        if (character >= 0xFF01 && character <= 0xFF5E) {
            Append(ordinary, character - 0xFF00 + 0x20);
        } else if (character == 0x3000) {
            ordinary += ' ';
        } else if (character >= 0xFF61 && character <= 0xFF9F) {
            char32_t kana = kHalfWidth[character - 0xFF61];
            const auto [mark, markSize] = text.empty() ? std::pair<char32_t, std::size_t>() : Front(text);
            if (const char32_t marked = WithMark(kana, mark)) {
                kana = marked;
                text.remove_prefix(markSize);
            }
            Append(ordinary, kana);
        } else {
            ordinary += bytes;
        }
    }
    return ordinary;
}

std::vector<SpokenClause> FindClauses(const std::string& text, const std::vector<Morpheme>& morphemes) {
    return Walk(text, morphemes).Run();
}

}  // namespace sorakaze::speech
