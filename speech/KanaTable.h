// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How kana are spelt in Latin letters. Kept behaviour 51.
#pragma once

#include <array>

namespace sorakaze {

struct KanaRow {
    const char* kana;    ///< one or two characters
    const char* romaji;  ///< one to three
};

/// The row of the small tsu, which doubles the consonant after it.
inline constexpr int kSmallTsuRow = 166;

/// No row is the beginning of a later one, so the first row that matches is the longest.
inline constexpr std::array<KanaRow, 167> kKanaTable = {{
    // clang-format off
    {"，", ","}, {"、", ","}, {"。", "."}, {"ー", "-"},
    {"いぇ", "ye"}, {"うぃ", "wi"}, {"うぇ", "we"},
    {"ゔぁ", "va"}, {"ゔぃ", "vi"}, {"ゔぇ", "ve"}, {"ゔぉ", "vo"}, {"ゔ", "vu"},
    {"きゃ", "kya"}, {"きぃ", "kyi"}, {"きゅ", "kyu"}, {"きぇ", "kye"}, {"きょ", "kyo"}, {"くぁ", "kwa"},
    {"しゃ", "sha"}, {"しぃ", "syi"}, {"しゅ", "shu"}, {"しぇ", "she"}, {"しょ", "sho"},
    {"ちゃ", "cha"}, {"ちぃ", "cyi"}, {"ちゅ", "chu"}, {"ちぇ", "che"}, {"ちょ", "cho"},
    {"てゃ", "tha"}, {"てぃ", "thi"}, {"てゅ", "thu"}, {"てぇ", "the"}, {"てょ", "tho"},
    {"にゃ", "nya"}, {"にぃ", "nyi"}, {"にゅ", "nyu"}, {"にぇ", "nye"}, {"にょ", "nyo"},
    {"ひゃ", "hya"}, {"ひぃ", "hyi"}, {"ひゅ", "hyu"}, {"ひぇ", "hye"}, {"ひょ", "hyo"},
    {"ふぁ", "fa"}, {"ふぃ", "fi"}, {"ふぇ", "fe"}, {"ふぉ", "fo"},
    {"ふゃ", "fya"}, {"ふゅ", "fyu"}, {"ふょ", "fyo"},
    {"みゃ", "mya"}, {"みぃ", "myi"}, {"みゅ", "myu"}, {"みぇ", "mye"}, {"みょ", "myo"},
    {"りゃ", "rya"}, {"りぃ", "ryi"}, {"りゅ", "ryu"}, {"りぇ", "rye"}, {"りょ", "ryo"},
    {"ぎゃ", "gya"}, {"ぎぃ", "gyi"}, {"ぎゅ", "gyu"}, {"ぎぇ", "gye"}, {"ぎょ", "gyo"},
    {"じゃ", "ja"}, {"じぃ", "jyi"}, {"じゅ", "ju"}, {"じぇ", "je"}, {"じょ", "jo"},
    {"ぢゃ", "dya"}, {"ぢぃ", "dyi"}, {"ぢゅ", "dyu"}, {"ぢぇ", "dye"}, {"ぢょ", "dyo"},
    {"でゃ", "dha"}, {"でぃ", "dhi"}, {"でゅ", "dhu"}, {"でぇ", "dhe"}, {"でょ", "dho"},
    {"びゃ", "bya"}, {"びぃ", "byi"}, {"びゅ", "byu"}, {"びぇ", "bye"}, {"びょ", "byo"},
    {"ぴゃ", "pya"}, {"ぴぃ", "pyi"}, {"ぴゅ", "pyu"}, {"ぴぇ", "pye"}, {"ぴょ", "pyo"},
    {"あ", "a"}, {"い", "i"}, {"う", "u"}, {"え", "e"}, {"お", "o"},
    {"か", "ka"}, {"き", "ki"}, {"く", "ku"}, {"け", "ke"}, {"こ", "ko"},
    {"さ", "sa"}, {"し", "shi"}, {"す", "su"}, {"せ", "se"}, {"そ", "so"},
    {"た", "ta"}, {"ち", "chi"}, {"つ", "tsu"}, {"て", "te"}, {"と", "to"},
    {"な", "na"}, {"に", "ni"}, {"ぬ", "nu"}, {"ね", "ne"}, {"の", "no"},
    {"は", "ha"}, {"ひ", "hi"}, {"ふ", "fu"}, {"へ", "he"}, {"ほ", "ho"},
    {"ま", "ma"}, {"み", "mi"}, {"む", "mu"}, {"め", "me"}, {"も", "mo"},
    {"や", "ya"}, {"ゆ", "yu"}, {"よ", "yo"},
    {"ら", "ra"}, {"り", "ri"}, {"る", "ru"}, {"れ", "re"}, {"ろ", "ro"},
    {"わ", "wa"}, {"を", "wo"}, {"ん", "nn"},
    {"が", "ga"}, {"ぎ", "gi"}, {"ぐ", "gu"}, {"げ", "ge"}, {"ご", "go"},
    {"ざ", "za"}, {"じ", "ji"}, {"ず", "zu"}, {"ぜ", "ze"}, {"ぞ", "zo"},
    {"だ", "da"}, {"ぢ", "di"}, {"づ", "du"}, {"で", "de"}, {"ど", "do"},
    {"ば", "ba"}, {"び", "bi"}, {"ぶ", "bu"}, {"べ", "be"}, {"ぼ", "bo"},
    {"ぱ", "pa"}, {"ぴ", "pi"}, {"ぷ", "pu"}, {"ぺ", "pe"}, {"ぽ", "po"},
    {"ぁ", "la"}, {"ぃ", "li"}, {"ぅ", "lu"}, {"ぇ", "le"}, {"ぉ", "lo"},
    {"っ", "ltu"},
    // clang-format on
}};

}  // namespace sorakaze
