// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What is pronounced of a text, with the system's dictionary.
#include <gtest/gtest.h>

#include "speech/say/JapaneseText.h"
#include "speech/say/KanaPhonemes.h"

namespace sorakaze::speech {
namespace {

/// Foreign words in angle brackets; behind each clause its pause as a mark.
std::string Spoken(const std::string& text) {
    const std::string ordinary = OrdinaryWidths(text);
    std::string spoken;
    for (const SpokenClause& clause : FindClauses(ordinary, FindMorphemes(ordinary))) {
        for (const SpokenPart& part : clause.parts) {
            spoken += part.language == SpokenPart::Language::Latin ? "<" + part.text + ">" : part.text;
        }
        spoken += std::string_view("-,.?")[static_cast<std::size_t>(clause.end)];
    }
    return spoken;
}

TEST(JapaneseTextTest, IsPronouncedAsAnAnnouncerWould) {
    constexpr std::pair<const char*, const char*> kCases[] = {
        {"私は東京へ行った。", "ワタシワ トーキョーエ イッタ."},
        {"それでは、本当ですか？", "ソレデワ,ホントーデスカ?"},
        {"The Beatlesの「Let It Be」です", "<The Beatles>ノ-<Let It Be>-デス."},
        {"AC/DC、Guns N' Roses、Simon & Garfunkel", "<AC/DC>,<Guns N' Roses>,<Simon & Garfunkel>."},
        {"Maroon 5の曲と10ccとCD2枚", "<Maroon 5>ノ キョクト<10cc>ト<CD>ニマイ."},
        {"2024年5月1日、1日に3回", "ニセンニジューヨネン ゴガツ ツイタチ,イチニチニ サンカイ."},
        {"二〇二四年九月四日の7時4分", "ニセンニジューヨネン クガツ ヨッカノ シチジ ヨンプン."},
        {"12:30、3.5℃、60%", "ジューニジ サンジュップン,サンテンゴ ド,ロクジュッパーセント."},
        {"6曲、8曲、10曲、100回、300本、6本",
         "ロッキョク,ハッキョク,ジュッキョク,ヒャッカイ,サンビャッポン,ロッポン."},
        {"2人、4人組、20歳、5つ、三日間", "フタリ,ヨニングミ,ハタチ,イツツ,ミッカカン."},
        {"1,234,567円、一億二千万円、1000万人、007",
         "ヒャクニジューサンマンヨンセンゴヒャクロクジューナナエン,イチオクニセンマンエン,イッセンマンニン,"
         "ゼロゼロナナ."},
        {"１９９９年、ＡＢＣ、ﾋﾞｰﾄﾙｽﾞ、ﾊﾟﾊﾟ",
         "センキューヒャクキュージューキューネン,<ABC>,ビートルズ,パパ."},
        {"😀…♪「」--", ""},
    };
    for (const auto& [text, expected] : kCases) EXPECT_EQ(Spoken(text), expected) << text;
}

TEST(JapaneseTextTest, KanaHaveTheEnginesPhonemes) {
    constexpr std::pair<const char*, const char*> kCases[] = {
        {"キョーワ", "k_jo:w'a"},
        {"リュックサック", "r`_jukk'usakku"},
        {"シンイチ", "s\\iN\\'it_s\\i"},
        {"ンー", "N\\"},
        {"x漢ー", ""},
        {"マッチ", "matt_s\\'i"},
    };
    for (const auto& [kana, expected] : kCases) EXPECT_EQ(KanaPhonemes(kana), expected) << kana;
}

}  // namespace
}  // namespace sorakaze::speech
