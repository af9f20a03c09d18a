// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/reading/Languages.h"

#include "base/Ascii.h"

namespace sorakaze::reading {
namespace {

constexpr Words kEnglish = {"and",       "plus",   "number", "opus",    "part",          "volume",
                            "featuring", "versus", "with",   "at",      "dot",           "slash",
                            "hashtag",   "equals", "half",   "quarter", "three quarters"};
constexpr Words kGerman = {"und",     "plus",   "Nummer", "Opus",    "Teil",        "Volume",
                           "mit",     "gegen",  "mit",    "at",      "Punkt",       "Schrägstrich",
                           "Hashtag", "gleich", "halb",   "Viertel", "drei Viertel"};
constexpr Words kJapanese = {"アンド",           "プラス",   "ナンバー", "作品",     "パート",  "ボリューム",
                             "フィーチャリング", "対",       "ウィズ",   "アット",   "ドット",  "スラッシュ",
                             "ハッシュタグ",     "イコール", "二分の一", "四分の一", "四分の三"};
constexpr Words kFrench = {"et",      "plus",   "numéro", "opus",    "partie",      "volume",
                           "avec",    "contre", "avec",   "arobase", "point",       "barre",
                           "hashtag", "égale",  "demi",   "quart",   "trois quarts"};
constexpr Words kSpanish = {"y",       "más",     "número", "opus",   "parte",       "volumen",
                            "con",     "contra",  "con",    "arroba", "punto",       "barra",
                            "hashtag", "igual a", "medio",  "cuarto", "tres cuartos"};
constexpr Words kItalian = {"e",       "più",      "numero", "opera",      "parte",     "volume",
                            "con",     "contro",   "con",    "chiocciola", "punto",     "barra",
                            "hashtag", "uguale a", "mezzo",  "quarto",     "tre quarti"};
constexpr Words kNone = {};

bool IsText(const Sentence& sentence, std::size_t index) {
    return sentence.Is(index, Token::Kind::Word) || sentence.Is(index, Token::Kind::Japanese);
}

}  // namespace

Main MainOf(std::string_view language) {
    const std::string code = ascii::Lowered(language.substr(0, language.find_first_of("-_")));
    if (code == "en") return Main::English;
    if (code == "de") return Main::German;
    if (code == "ja") return Main::Japanese;
    if (code == "fr") return Main::French;
    if (code == "es") return Main::Spanish;
    return code == "it" ? Main::Italian : Main::Other;
}

const Words& WordsOf(Main main) {
    switch (main) {
        case Main::English:
            return kEnglish;
        case Main::German:
            return kGerman;
        case Main::Japanese:
            return kJapanese;
        case Main::French:
            return kFrench;
        case Main::Spanish:
            return kSpanish;
        case Main::Italian:
            return kItalian;
        case Main::Other:
            break;
    }
    return kNone;
}

Main LanguageAt(const Sentence& sentence, std::size_t index, Main voice) {
    if (voice != Main::Japanese) return voice;
    constexpr std::size_t kNear = 4;
    // The text before decides, so that a word after a title isn't taken for a part of it.
    std::size_t at = index;
    for (std::size_t step = 0; step < kNear; ++step) {
        at = sentence.Previous(at);
        if (at == Sentence::kNone) break;
        if (IsText(sentence, at)) return sentence.Is(at, Token::Kind::Word) ? Main::English : Main::Japanese;
    }
    at = index;
    for (std::size_t step = 0; step < kNear; ++step) {
        at = sentence.Next(at);
        if (at == Sentence::kNone) break;
        if (IsText(sentence, at)) return sentence.Is(at, Token::Kind::Word) ? Main::English : Main::Japanese;
    }
    return sentence.Is(index, Token::Kind::Word) ? Main::English : Main::Japanese;
}

}  // namespace sorakaze::reading
