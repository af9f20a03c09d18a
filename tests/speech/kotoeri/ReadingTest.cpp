// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "app/runtime/Shell.h"
#include "base/Utf8.h"
#include "speech/japanese/Characters.h"
#include "speech/kotoeri/Hiragana.h"
#include "tests/support/TestShow.h"

namespace sorakaze::kotoeri {
namespace {

using namespace japanese;

std::string Read(const std::string& text) {
    static const Reader reader{Dictionary()};
    return InHiragana(reader, text);
}

void ExpectReadings(const std::vector<std::pair<std::string, std::string>>& cases) {
    for (const auto& [text, reading] : cases) {
        const std::string read = Read(text);
        EXPECT_TRUE(read == reading) << text << " is read " << read << " and not " << reading;
    }
}

TEST(Reading, Kana) {
    ExpectReadings({
        {"僕は海へ", "ぼく,は,うみ,へ"},  // not わ and え
        {"ﾊﾟﾌｭｰﾑ", "ぱふゅーむ"},
        {"ｳﾞｧｲｵﾘﾝ･ｶﾞｰﾙ", "ゔぁいおりん,がーる"},
        {"か\u3099っこう", "がっこう"},  // decomposed
        {"あ゛ー", "あー"},
        {"いすゞ", "いすず"},
        {"サヾエ", "さざえ"},
        {"インタヴュー", "いんたびゅー"},
        {"ウヰスキー", "ういすきー"},
        {"ゎたし", "わたし"},
        {"あっ、夢", "あ、,ゆめ"},
        {"ドキッ！えっ夢ッ☆", "どき！,え,ゆめ,☆"},
        {"ﾜﾞワ゛ワヾヱヾヲ゛", "ゔぁゔぁわゔぁえゔぇゔぉ"},
        {"ヶ", "け"},
        {"歌って踊った", "うたって,おどった"},
    });
}

TEST(Reading, Kanji) {
    ExpectReadings({
        {"人々", "ひとびと"},
        {"寂々", "せきせき"},
        {"々", "々"},
        {"玖保", "くほ"},  // no word by itself
        {"龘", "龘"},      // in no word at all
        {"髙橋", "たかはし"},
        {"\uFA19", "かみ"},  // 神 in its compatibility form
        {"夢ヶ丘", "ゆめがおか"},
        {"歳の差", "とし,の,さ"},
        {"歳の夏", "さい,の,なつ"},
        {"罰が当たる", "ばち,が,あたる"},
        {"葛\U000E0100城の\u200B夢\uFEFF", "かつらぎ,の,ゆめ"},
    });
}

/// What the lexicon knows is none within other words and other people's names.
TEST(Reading, EntriesAreWholeWords) {
    ExpectReadings({
        {"吉永小百合", "よしなが,さゆり"},
        {"田中孝介", "たなか,こうすけ"},
        {"松本隆太郎", "まつもと,りゅうたろう"},
        {"遠藤実香", "えんどう,みか"},
        {"優里香", "ゆりか"},
        {"春風亭小朝", "しゅんぷうていこあさ"},
        {"表現世界", "ひょうげん,せかい"},
        {"永久にんじん", "えいきゅう,にんじん"},
        {"八百万円", "はっぴゃくまんえん"},
        {"八百万の神", "やおよろず,の,かみ"},
    });
    for (const Entry& entry : LexiconEntries()) {
        std::string read = Read(Encode(entry.surface));
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
        {"江利チエミ", "えり,ちえみ"},
        {"風の谷のナウシカ", "かぜ,の,たに,の,なうしか"},
        {"竹内まりやの歌", "たけうち,まりや,の,うた"},
        {"林だよ", "はやし,だ,よ"},
        {"風街ろまん", "かぜまち,ろまん"},
        {"贈りものの歌", "おくりもの,の,うた"},
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
        {"一ヵ月", "いっかげつ"},
        {"一九八四", "せんきゅうひゃくはちじゅうよん"},
        {"二〇〇一年五月一日", "にせんいちねん,ごがつ,ついたち"},
        {"〇〇七", "ぜろぜろなな"},
        {"十回", "じゅっかい"},
        {"二十歳", "はたち"},
        {"１７歳", "１７さい"},
        {"歳", "さい"},  // of "17歳", the digits of which never come here
        {"100万回", "100まんかい"},
        {"3月9日", "3がつ,9にち"},
        {"3丁目の夕日", "3ちょうめ,の,ゆうひ"},
        {"丁目の夕日", "ちょうめ,の,ゆうひ"},  // of "3丁目の夕日"
    });
}

TEST(Reading, WhatHasNoReadingStays) {
    ExpectReadings({
        {"", ""},
        {"Hello, world: R2D2 (3.14)", "Hello, world: R2D2 (3.14)"},
        {"Ａ．Ｂ・２Ｃの夢2", "Ａ．Ｂ,２Ｃ,の,ゆめ,2"},
        {"ＡＢＣの歌", "ＡＢＣ,の,うた"},
        {"안녕하세요 Привет สวัสดี Café", "안녕하세요 Привет สวัสดี Café"},
        {"Cafe\u0301夢", "Café,ゆめ"},
        {"🎵夢👩‍🎤", "🎵,ゆめ,👩‍🎤"},
        {"\xFF夢\xE3\x81", "\xFF,ゆめ,\xE3\x81"},
        {"\xED\xA0\x80", "\xED\xA0\x80"},
        {"「夢」と、恋。", "「ゆめ」,と、,こい。"},
        {"夢 恋\n愛", "ゆめ こい\nあい"},
        {"　夢　恋　", "ゆめ,こい"},
    });
}

/// Every kind of text at every length that matters to a dictionary's buffers: nothing of it is lost.
TEST(Reading, LongTextsAreReadToTheirEnds) {
    for (const std::string unit : {"夢", "あ", "ア", "ー", "っか", "一", "1", "々", "龘", "「", "🎵", "한",
                                   "1夢", "夢は", "宇多田ヒカル", "か\u3099", "ｶﾞ", "\xFF", "\xE3"}) {
        std::string text;
        for (int i = 0; i < 5000; ++i) text += unit;
        const std::string reading = Read(text + "終");
        EXPECT_GE(utf8::CountCharacters(reading), 2500u) << unit;
        const std::string end = reading.substr(reading.size() - 12);
        EXPECT_TRUE(end.find("おわ") != std::string::npos || end.ends_with("しゅう")) << unit << ": " << end;
    }
}

TEST(Reading, AMissingDictionaryIsTold) {
    EXPECT_THROW(Dictionary("/nowhere at all"), NoDictionary);
    EXPECT_TRUE(InHiraganaWithoutDictionary("宇多田ﾋｶﾙ ABC\xFF") == "宇多田ひかる ABC\xFF");
}

/// The program as a show runs it: by the shell, confined, with its folder and the dictionary to read.
TEST(SayKotoeri, ReadsForAShow) {
    test::TestShow show;
    const std::string path = "Sorakaze.app/Contents/Resources/SayKotoeri";
    std::filesystem::copy_file(KOTOERI_PROGRAM, show.folder.Path() / path);
    EXPECT_EQ(show.window.convertRoma("宇多田ヒカル - 花束を君に").Bytes(),
              "utada hikaru - hanataba wo kimi ni");
    EXPECT_EQ(show.window.convertRoma("한국어 ＡＢ🎵").Bytes(), "한국어 ＡＢ🎵");

    std::string title;
    for (int i = 0; i < 5000; ++i) title += "夢";
    EXPECT_GE(show.window.convertRoma(title + "海").Bytes().size(), 5000u * 4);

    Shell shell;
    const std::string program = show.runtime.ResourcesFolder() / "SayKotoeri";
    const struct {
        std::string words;
        int status;
        std::string output;
    } cases[] = {
        {" -o \"夢は\"", 0, "ゆめ,は\n"},
        {" -o \"\"", 0, "\n"},
        {" -o -o", 0, "-o\n"},
        {" -o", 2, ""},
        {" 夢", 2, ""},
    };
    for (const auto& [words, status, output] : cases) {
        shell.Execute(program + words);
        EXPECT_EQ(shell.Result().Bytes(), output) << words;
        // Not the confined one's status: what looks for leaks in a sanitized program can't do so there.
        const int ended = std::system((program + words + " >/dev/null 2>&1").c_str());
        EXPECT_EQ(WEXITSTATUS(ended), status) << words;
    }
}

}  // namespace
}  // namespace sorakaze::kotoeri
