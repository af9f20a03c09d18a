// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/runtime/Utf8.h"
#include "speech/kotoeri/Characters.h"
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
        {"あっ、夢", "あ、,ゆめ"},
        {"ドキッ！えっ夢ッ☆", "どき！,え,ゆめ,☆"},
        {"ﾜﾞワ゛ワヾヱヾヲ゛", "ゔぁゔぁわゔぁえゔぇゔぉ"},
        {"A゛夢ﾟﾞ", "A゛,ゆめ,゜゛"},
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
        {"歳の差", "とし,の,さ"},
        {"歳をとる", "とし,を,とる"},
        {"歳の夏", "さい,の,なつ"},
        {"都バス", "と,ばす"},
        {"水の都", "みず,の,みやこ"},
        {"罰が当たる", "ばち,が,あたる"},
        {"罪と罰", "つみ,と,ばつ"},
        {"葛\U000E0100城の\u200B夢\uFEFF", "かつらぎ,の,ゆめ"},
    });
}

/// What the lexicon knows is none within other words and other people's names.
TEST(Reading, EntriesAreWholeWords) {
    ExpectReadings({
        {"吉永小百合", "よしなが,さゆり"},
        {"田中孝介", "たなか,こうすけ"},
        {"山中孝介", "やまなか,こうすけ"},
        {"松本隆博", "まつもと,たかひろ"},
        {"松本隆太郎", "まつもと,りゅうたろう"},
        {"遠藤実香", "えんどう,みか"},
        {"遠藤実は", "えんどう,みのる,は"},
        {"前川清美", "まえかわ,きよみ"},
        {"優里香", "ゆりか"},
        {"春風亭小朝", "しゅんぷうていこあさ"},
        {"六段の調べ", "ろくだん,の,しらべ"},
        {"青春風景", "せいしゅん,ふうけい"},
        {"深夜風呂", "しんや,ふろ"},
        {"表現世界", "ひょうげん,せかい"},
        {"現世界", "げんせかい"},
        {"夢現実", "ゆめ,げんじつ"},
        {"恋文学", "こい,ぶんがく"},
        {"海外道中", "かいがい,どうちゅう"},
        {"梅雨音頭", "つゆ,おんど"},
        {"春雨傘", "はるさめ,かさ"},
        {"永久にんじん", "えいきゅう,にんじん"},
        {"八百万円", "はっぴゃくまんえん"},
        {"八百万の神", "やおよろず,の,かみ"},
        {"百二十歳", "ひゃくにじゅっさい"},
    });
    for (const Entry& entry : Entries()) {
        std::string read = TheReader().Read(Encode(entry.surface));
        std::string reading = Encode(entry.reading);
        std::erase(read, ',');
        std::erase(reading, ' ');
        EXPECT_TRUE(read == reading) << Encode(entry.surface) << " is read " << read;
    }
}

/// No comma in what the dictionary cuts because it doesn't know it.
TEST(Reading, WordsInKanaStayWhole) {
    ExpectReadings({
        {"倉橋ヨエコ", "くらはし,よえこ"},
        {"加藤ミキヨ", "かとう,みきよ"},
        {"江利チエミ", "えり,ちえみ"},
        {"風の谷のナウシカ", "かぜ,の,たに,の,なうしか"},
        {"丸の内サディスティック", "まるのうち,さでぃすてぃっく"},
        {"夏川りみ", "なつかわ,りみ"},
        {"竹内まりや", "たけうち,まりや"},
        {"竹内まりやの歌", "たけうち,まりや,の,うた"},
        {"林だよ", "はやし,だ,よ"},
        {"風街ろまん", "かぜまち,ろまん"},
        {"贈りもの", "おくりもの"},
        {"贈りものの歌", "おくりもの,の,うた"},
        {"勝手にしやがれ", "かって,に,しやがれ"},
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
        {"二〇〇〇", "にぜろぜろぜろ"},
        {"〇〇七", "ぜろぜろなな"},
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
    for (const std::string unit : {"夢", "あ", "ア", "ー", "っか", "一", "1", "々", "龘", "「", "🎵", "한",
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
    EXPECT_TRUE(ReadWithoutDictionary("宇多田ﾋｶﾙ ABC\xFF") == "宇多田ひかる ABC\xFF");
}

}  // namespace
}  // namespace sorakaze::kotoeri
