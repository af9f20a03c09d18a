// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/KanaPhonemes.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

namespace sorakaze::speech {
namespace {

struct Kana {
    std::string_view kana;
    std::string_view consonant;
    std::string_view vowel;
};

/// The first that matches is taken, so longer ones precede those that they start with.
constexpr Kana kTable[] = {
    // With a small vowel
    {"イェ", "j", "e"},
    {"ウィ", "w", "i"},
    {"ウェ", "w", "e"},
    {"ウォ", "w", "o"},
    {"ヴァ", "v", "a"},
    {"ヴィ", "v", "i"},
    {"ヴェ", "v", "e"},
    {"ヴォ", "v", "o"},
    {"ヴュ", "v_j", "u"},
    {"クァ", "kw", "a"},
    {"クィ", "kw", "i"},
    {"クェ", "kw", "e"},
    {"クォ", "kw", "o"},
    {"クヮ", "kw", "a"},
    {"グァ", "gw", "a"},
    {"グヮ", "gw", "a"},
    {"シェ", "s\\", "e"},
    {"ジェ", "d_z\\", "e"},
    {"スィ", "s", "i"},
    {"ズィ", "z", "i"},
    {"チェ", "t_s\\", "e"},
    {"ツァ", "t_s", "a"},
    {"ツィ", "t_s", "i"},
    {"ツェ", "t_s", "e"},
    {"ツォ", "t_s", "o"},
    {"ティ", "t", "i"},
    {"テュ", "t_j", "u"},
    {"ディ", "d", "i"},
    {"デュ", "d_j", "u"},
    {"トゥ", "t", "u"},
    {"ドゥ", "d", "u"},
    {"ファ", "p\\", "a"},
    {"フィ", "p\\", "i"},
    {"フェ", "p\\", "e"},
    {"フォ", "p\\", "o"},
    {"フュ", "p\\_j", "u"},
    // The table of fifty sounds
    {"ア", "", "a"},
    {"イ", "", "i"},
    {"ウ", "", "u"},
    {"エ", "", "e"},
    {"オ", "", "o"},
    {"カ", "k", "a"},
    {"キ", "k", "i"},
    {"ク", "k", "u"},
    {"ケ", "k", "e"},
    {"コ", "k", "o"},
    {"ガ", "g", "a"},
    {"ギ", "g", "i"},
    {"グ", "g", "u"},
    {"ゲ", "g", "e"},
    {"ゴ", "g", "o"},
    {"サ", "s", "a"},
    {"シ", "s\\", "i"},
    {"ス", "s", "u"},
    {"セ", "s", "e"},
    {"ソ", "s", "o"},
    {"ザ", "z", "a"},
    {"ジ", "d_z\\", "i"},
    {"ズ", "z", "u"},
    {"ゼ", "z", "e"},
    {"ゾ", "z", "o"},
    {"タ", "t", "a"},
    {"チ", "t_s\\", "i"},
    {"ツ", "t_s", "u"},
    {"テ", "t", "e"},
    {"ト", "t", "o"},
    {"ダ", "d", "a"},
    {"ヂ", "d_z\\", "i"},
    {"ヅ", "z", "u"},
    {"デ", "d", "e"},
    {"ド", "d", "o"},
    {"ナ", "n", "a"},
    {"ニ", "n", "i"},
    {"ヌ", "n", "u"},
    {"ネ", "n", "e"},
    {"ノ", "n", "o"},
    {"ハ", "h", "a"},
    {"ヒ", "C", "i"},
    {"フ", "p\\", "u"},
    {"ヘ", "h", "e"},
    {"ホ", "h", "o"},
    {"バ", "b", "a"},
    {"ビ", "b", "i"},
    {"ブ", "b", "u"},
    {"ベ", "b", "e"},
    {"ボ", "b", "o"},
    {"パ", "p", "a"},
    {"ピ", "p", "i"},
    {"プ", "p", "u"},
    {"ペ", "p", "e"},
    {"ポ", "p", "o"},
    {"マ", "m", "a"},
    {"ミ", "m", "i"},
    {"ム", "m", "u"},
    {"メ", "m", "e"},
    {"モ", "m", "o"},
    {"ヤ", "j", "a"},
    {"ユ", "j", "u"},
    {"ヨ", "j", "o"},
    {"ラ", "r`", "a"},
    {"リ", "r`", "i"},
    {"ル", "r`", "u"},
    {"レ", "r`", "e"},
    {"ロ", "r`", "o"},
    {"ワ", "w", "a"},
    {"ヰ", "", "i"},
    {"ヱ", "", "e"},
    {"ヲ", "", "o"},
    {"ヴ", "v", "u"},
    // Small ones by themselves
    {"ァ", "", "a"},
    {"ィ", "", "i"},
    {"ゥ", "", "u"},
    {"ェ", "", "e"},
    {"ォ", "", "o"},
    {"ャ", "j", "a"},
    {"ュ", "j", "u"},
    {"ョ", "j", "o"},
    {"ヮ", "w", "a"},
    {"ヵ", "k", "a"},
    {"ヶ", "k", "a"},
    // Those that depend on the neighbouring sounds
    {"ン", "N", ""},
    {"ッ", "?", ""},
    {"ー", ":", ""},
};

struct Mora {
    std::string consonant;
    std::string vowel;  ///< empty for the nasal, the stop and the lengthening
};

/// Removes one kana from the front. Anything else is dropped, and nothing is returned.
std::optional<Kana> TakeKana(std::string_view& text) {
    const auto* found = std::find_if(std::begin(kTable), std::end(kTable),
                                     [&](const Kana& row) { return text.starts_with(row.kana); });
    if (found != std::end(kTable)) {
        text.remove_prefix(found->kana.size());
        return *found;
    }
    do {
        text.remove_prefix(1);
    } while (!text.empty() && (static_cast<unsigned char>(text.front()) & 0xC0U) == 0x80U);
    return {};
}

/// "キ" and "ャ" are one mora.
bool TakeGlide(std::string_view& text, Mora& mora) {
    if (mora.vowel != "i" || mora.consonant.empty()) return false;
    for (const auto& [glide, vowel] :
         {std::pair<std::string_view, const char*>{"ャ", "a"}, {"ュ", "u"}, {"ョ", "o"}, {"ェ", "e"}}) {
        if (!text.starts_with(glide)) continue;
        text.remove_prefix(glide.size());
        const bool palatal = mora.consonant.back() == '\\' || mora.consonant == "C";
        if (!palatal) mora.consonant += "_j";
        mora.vowel = vowel;
        return true;
    }
    return false;
}

std::vector<Mora> FindMorae(std::string_view katakana) {
    std::vector<Mora> morae;
    while (!katakana.empty()) {
        const auto kana = TakeKana(katakana);
        if (!kana) continue;
        Mora mora{std::string(kana->consonant), std::string(kana->vowel)};
        TakeGlide(katakana, mora);
        const bool lengthens = mora.consonant == ":";
        // Only a vowel can be lengthened, and only once.
        if (lengthens && (morae.empty() || morae.back().vowel.empty())) continue;
        morae.push_back(std::move(mora));
    }
    return morae;
}

/// The nasal is articulated where the next consonant is.
std::string_view NasalBefore(std::string_view consonant) {
    if (consonant.empty()) return "N\\";
    switch (consonant.front()) {
        case 'p':
            return consonant.starts_with("p\\") ? "N\\" : "m";
        case 'b':
        case 'm':
            return "m";
        case 't':
        case 'd':
        case 'n':
        case 'z':
        case 'r':
            return "n";
        case 'k':
        case 'g':
            return "N";
        default:
            return "N\\";
    }
}

/// The stop is the first half of the next consonant.
std::string_view StopBefore(std::string_view consonant) {
    if (consonant.starts_with("s\\")) return "s\\";
    if (consonant.starts_with("p\\")) return "p\\";
    const bool doubles = !consonant.empty() &&
                         std::string_view("kgstdpbzhC").find(consonant.front()) != std::string_view::npos;
    return doubles ? consonant.substr(0, 1) : "?";
}

}  // namespace

std::string KanaPhonemes(std::string_view katakana) {
    const auto morae = FindMorae(katakana);
    const auto spoken =
        std::count_if(morae.begin(), morae.end(), [](const Mora& mora) { return !mora.vowel.empty(); });
    std::string phonemes;
    int vowels = 0;
    for (std::size_t i = 0; i < morae.size(); ++i) {
        const Mora& mora = morae[i];
        const std::string_view next =
            i + 1 < morae.size() ? std::string_view(morae[i + 1].consonant) : std::string_view();
        if (mora.consonant == "N" && mora.vowel.empty()) {
            phonemes += NasalBefore(next);
        } else if (mora.consonant == "?" && mora.vowel.empty()) {
            phonemes += StopBefore(next);
        } else {
            phonemes += mora.consonant;
            if (!mora.vowel.empty() && ++vowels == std::min<std::ptrdiff_t>(2, spoken)) phonemes += '\'';
            phonemes += mora.vowel;
        }
    }
    return phonemes;
}

}  // namespace sorakaze::speech
