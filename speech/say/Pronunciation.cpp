// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/Pronunciation.h"

#include <algorithm>

#include "speech/japanese/Characters.h"
#include "speech/japanese/Grammar.h"

namespace sorakaze::speech {
namespace {

using namespace japanese;

bool IsOneOf(char32_t code, std::u32string_view set) {
    return set.find(code) != std::u32string_view::npos;
}

bool EndsInU(char32_t kana) {
    return IsOneOf(kana, U"うくすつぬふむゆるぐずづぶぷゅ");
}
bool EndsInO(char32_t kana) {
    return IsOneOf(kana, U"おこそとのほもよろごぞどぼぽょ");
}

/// うう and おう are long vowels, and so is おお but for the five hundred millions of ごおく.
bool Lengthens(char32_t before, char32_t kana) {
    if (kana == U'う') return EndsInU(before) || EndsInO(before);
    return kana == U'お' && EndsInO(before) && before != U'ご';
}

std::u32string Spoken(std::u32string_view word) {
    if (word == U"は") return U"ワ";
    if (word == U"へ") return U"エ";
    if (word == U"を") return U"オ";
    std::u32string spoken;
    for (std::size_t at = 0; at < word.size(); ++at) {
        const bool lengthens = at > 0 && Lengthens(word[at - 1], word[at]);
        spoken += lengthens ? U'ー' : word[at];
    }
    return ToKatakana(spoken);
}

/// Word by word, as a blank parts them.
std::u32string SpokenWords(std::u32string_view words) {
    std::u32string spoken;
    while (!words.empty()) {
        const std::size_t blank = std::min(words.find(U' '), words.size());
        if (!spoken.empty()) spoken += U' ';
        spoken += Spoken(words.substr(0, blank));
        words.remove_prefix(std::min(blank + 1, words.size()));
    }
    return spoken;
}

}  // namespace

std::u32string Pronunciation(const ReadMorpheme& morpheme) {
    if (IsParticle(morpheme.grammar) && morpheme.surface.size() == 1) return Spoken(morpheme.surface);
    std::u32string spoken = morpheme.pronunciation;
    // Words in kana that the dictionary doesn't know are written as they sound.
    if (spoken.empty())
        spoken = IsAllKana(morpheme.surface) ? ToKatakana(morpheme.surface) : SpokenWords(morpheme.reading);
    std::erase_if(spoken, [](char32_t code) { return !IsKana(code) && code != U' '; });
    return spoken;
}

}  // namespace sorakaze::speech
