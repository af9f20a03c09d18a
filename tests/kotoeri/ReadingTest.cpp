// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/runtime/Utf8.h"
#include "speech/kotoeri/Reader.h"

namespace sorakaze::kotoeri {
namespace {

const Reader& TheReader() {
    static const Reader reader;
    return reader;
}

struct Case {
    std::string text, reading;
};

void ExpectReadings(const std::vector<Case>& cases) {
    for (const auto& [text, reading] : cases) {
        const std::string read = TheReader().Read(text);
        EXPECT_TRUE(read == reading) << text << " is read " << read << " and not " << reading;
    }
}

TEST(Reading, Kana) {
    ExpectReadings({
        {"僕は海へ", "ぼく,は,うみ,へ"},  // not わ and え
        {"ラブ・ストーリー", "らぶ,すとーりー"},
        {"ﾊﾟﾌｭｰﾑ", "ぱふゅーむ"},
        {"ｳﾞｧｲｵﾘﾝ･ｶﾞｰﾙ", "ゔぁいおりん,がーる"},
        {"か\u3099っこう", "がっこう"},  // decomposed
        {"か゛", "が"},
        {"あ゛ー", "あー"},
        {"いすゞ", "いすず"},
        {"こゝろ", "こころ"},
        {"サヾエ", "さざえ"},
        {"ヷイオリン", "ゔぁいおりん"},
        {"インタヴュー", "いんたびゅー"},
        {"ウヰスキー", "ういすきー"},
        {"ゎたし", "わたし"},
        {"ﾝ", "ん"},
        {"ー", "ー"},
        {"っ", "っ"},
        {"ヶ", "け"},
        {"歌って踊った", "うたって,おどった"},
        {"行っちゃった", "いっちゃった"},
    });
}

TEST(Reading, Kanji) {
    ExpectReadings({
        {"人々", "ひとびと"},
        {"佐々木", "ささき"},
        {"寂々", "せきせき"},
        {"々", "々"},
        {"濤", "とう"},
        {"玖保", "くほ"},  // no word by itself
        {"龘", "龘"},      // in no word at all
        {"髙橋", "たかはし"},
        {"\uFA19", "かみ"},  // 神 in its compatibility form
        {"夢ヶ丘", "ゆめがおか"},
        {"八ヶ岳", "やつがたけ"},
        {"宇多田ヒカル", "うただ,ひかる"},
        {"瑠璃色の夢", "るりいろ,の,ゆめ"},
        {"何だよ", "なん,だ,よ"},
    });
}

TEST(Reading, Numbers) {
    ExpectReadings({
        {"一人", "ひとり"},
        {"十二人", "じゅうににん"},
        {"十四人", "じゅうよにん"},
        {"三百六十五歩", "さんびゃくろくじゅうごほ"},
        {"八千六百本", "はっせんろっぴゃっぽん"},
        {"何千回", "なんぜんかい"},
        {"三分間", "さんぷんかん"},
        {"一ヵ月", "いっかげつ"},
        {"三ヶ月", "さんかげつ"},
        {"一九八四", "いちきゅうはちよん"},
        {"二〇〇一年", "にぜろぜろいちねん"},
        {"十一回", "じゅういっかい"},
        {"十回", "じゅっかい"},
        {"二十歳", "はたち"},
        {"17歳", "17さい"},
        {"１７歳", "１７さい"},
        {"歳", "さい"},  // of 17歳, the digits of which never come here
        {"100万回", "100まんかい"},
        {"3月9日", "3がつ,9にち"},
    });
}

TEST(Reading, WhatHasNoReadingStays) {
    ExpectReadings({
        {"", ""},
        {"Hello, world: R2D2 (3.14)", "Hello, world: R2D2 (3.14)"},
        {"Ａ．Ｂ・２Ｃの夢2", "Ａ．Ｂ,２Ｃ,の,ゆめ,2"},
        {"ＡＢＣの歌", "ＡＢＣ,の,うた"},
        {"안녕하세요", "안녕하세요"},
        {"Привет", "Привет"},
        {"สวัสดี", "สวัสดี"},
        {"Café Été", "Café Été"},
        {"Cafe\u0301夢", "Café,ゆめ"},
        {"🎵夢👩‍🎤", "🎵,ゆめ,👩‍🎤"},
        {"☆夢㈱①", "☆,ゆめ,㈱①"},
        {"\xFF夢\xE3\x81", "\xFF,ゆめ,\xE3\x81"},
        {"\xED\xA0\x80", "\xED\xA0\x80"},
        {"「夢」と、恋。", "「ゆめ」,と、,こい。"},
        {"　夢　恋　", "ゆめ,こい"},
        {"・・・", "・・・"},
        {"夢 恋\n愛", "ゆめ こい\nあい"},
    });
}

/// Every kind of text at every length that matters to a dictionary's buffers: nothing of it is lost.
TEST(Reading, LongTextsAreReadToTheirEnds) {
    for (const std::string unit : {"夢", "あ", "ア", "ー", "っ", "一", "1", "々", "龘", "「", "🎵", "한",
                                   "1夢", "夢は", "宇多田ヒカル", "か\u3099", "ｶﾞ", "\xFF", "\xE3"}) {
        std::string text;
        for (int i = 0; i < 5000; ++i) text += unit;
        const std::string reading = TheReader().Read(text + "終");
        EXPECT_GE(utf8::CountCharacters(reading), 2500u) << unit;
        const std::string end = reading.substr(reading.size() - 12);
        EXPECT_TRUE(end.find("おわ") != std::string::npos || end.ends_with("しゅう")) << unit << ": " << end;
    }
}

TEST(Reading, AMissingDictionaryIsTold) {
    try {
        const Reader reader("/nowhere at all");
        FAIL();
    } catch (const NoDictionary& problem) {
        EXPECT_THAT(problem.what(), testing::HasSubstr("/nowhere at all"));
        EXPECT_THAT(problem.what(), testing::HasSubstr("mecab-ipadic-utf8"));
        EXPECT_THAT(problem.what(), testing::Not(testing::HasSubstr("\n")));
    }
}

}  // namespace
}  // namespace sorakaze::kotoeri
