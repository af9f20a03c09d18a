// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What is pronounced of a Japanese text, with the system's dictionary, and who speaks it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "speech/say/JapaneseText.h"
#include "speech/say/KanaPhonemes.h"
#include "speech/say/SpeechFile.h"
#include "speech/say/voices/OpenJTalk.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

/// Foreign words in angle brackets; after each clause its pause as a mark.
std::string Spoken(const std::string& text) {
    static const japanese::Reader reader{japanese::Dictionary()};
    std::string spoken;
    for (const SpokenClause& clause : SpokenClauses(reader, OrdinaryForms(text))) {
        for (const SpokenPart& part : clause.parts) {
            spoken += part.language == SpokenPart::Language::Latin ? "<" + part.text + ">" : part.text;
        }
        spoken += std::string_view("-,.?")[static_cast<std::size_t>(clause.end)];
    }
    return spoken;
}

TEST(JapaneseTextTest, IsPronouncedAsAnAnnouncerWould) {
    constexpr std::pair<const char*, const char*> kCases[] = {
        {"私は東京へ行った。本当ですか？", "ワタシワ トーキョーエ イッタ.ホントーデスカ?"},
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
        {"12:30:45、1,2", "ジューニジ サンジュップン,ヨンジューゴ,イチ,ニ."},
        {"Perfumeは「夢」へ", "<Perfume>ワ-ユメ-エ."},
        {"宇多田ヒカルと米津玄師", "ウタダ ヒカルト ヨネヅ ケンシ."},
        {"ごおく、五億、井上陽水", "ゴオク,ゴオク,イノウエ ヨースイ."},
        {"微笑みの波音", "ホホエミノ ナミオト."},
        {"😀…♪「」--", ""},
    };
    for (const auto& [text, expected] : kCases) EXPECT_EQ(Spoken(text), expected) << text;
}

TEST(JapaneseTextTest, KanaHaveTheEnginesPhonemes) {
    constexpr std::pair<const char*, const char*> kCases[] = {
        {"キョーワ", "k_jo:w'a"}, {"リュックサック", "r`_jukk'usakku"},
        {"マッチ", "matt_s\\'i"}, {"シンイチ", "s\\iN\\'it_s\\i"},
        {"ンー", "N\\"},          {"x漢ー", ""},
    };
    for (const auto& [kana, expected] : kCases) EXPECT_EQ(KanaPhonemes(kana), expected) << kana;
}

/// Both programs, with a folder `ipadic` next to them: a broken one is reported and the machine's is used.
TEST(DictionaryFolderTest, IsLookedForNextToTheProgram) {
    test::TemporaryFolder folder;
    const fs::path ipadic = folder / "ipadic";
    for (const auto& [program, words] : {std::pair(KOTOERI_PROGRAM, "SayKotoeri -o 夢"),
                                         std::pair(SAY_PROGRAM, "say -v Kyoko 夢 -o speech.aiff")}) {
        fs::copy_file(program, folder / fs::path(program).filename());
        const auto errors = [&] {
            const std::string line =
                "cd '" + folder.Path().string() + "' && PATH=\"$PWD\" && " + words + " 2>errors >/dev/null";
            EXPECT_EQ(std::system(line.c_str()), 0) << line;
            return test::ReadBytes(folder / "errors");
        };
        fs::create_directory(ipadic);
        EXPECT_THAT(errors(), testing::HasSubstr("no IPA dictionary in UTF-8 in "));
        fs::remove(ipadic);
        fs::create_directory_symlink("/var/lib/mecab/dic/ipadic-utf8", ipadic);
        EXPECT_EQ(errors(), "");
        fs::remove(ipadic);
    }
}

/// No voice for it can be expected on the machine, so that a script replaces the program: it notes how it was
/// called and returns a sound.
struct OpenJTalkTest : testing::Test {
    OpenJTalkTest() {
        MakeProgram("cp '" + (folder / "tone.wav").string() + "' \"$6\"");
        folder.Write("dictionary/sys.dic", "");
        SpeechFile tone(folder / "tone.wav", 48000);
        tone.Write(std::vector<std::int16_t>(4800, 1000));
        tone.Finish();
    }
    /// A program that notes its call and then does what `end` says.
    void MakeProgram(const std::string& end) {
        const std::string calls = " >> '" + (folder / "calls").string() + "'\n";
        folder.Write("bin/open_jtalk", "#!/bin/sh\necho \"$@\"" + calls + "cat" + calls + end + "\n");
        fs::permissions(places.program, fs::perms::owner_all);
    }

    test::TemporaryFolder folder;
    OpenJTalkPaths places{folder / "bin/open_jtalk", folder / "dictionary", folder / "voices"};
};

TEST_F(OpenJTalkTest, IsChosenIfAllPartsAreThere) {
    EXPECT_FALSE(FindOpenJTalk(places, "kyoko", 1));
    folder.Write("voices/nitech/nitech_jp_atr503_m001.htsvoice", "");
    EXPECT_EQ(FindOpenJTalk(places, "otoya", 1)->semitones, 0);
    EXPECT_GT(FindOpenJTalk(places, "kyoko", 1)->semitones, 4);
    folder.Write("voices/mei/mei_normal.htsvoice", "");
    EXPECT_EQ(FindOpenJTalk(places, "kyoko", 1)->voice.filename(), "mei_normal.htsvoice");
    EXPECT_EQ(FindOpenJTalk(places, "otoya", 1)->voice.filename(), "nitech_jp_atr503_m001.htsvoice");
    fs::remove(folder / "dictionary/sys.dic");
    EXPECT_FALSE(FindOpenJTalk(places, "kyoko", 1));
}

TEST_F(OpenJTalkTest, SpeaksStretchByStretchOrFails) {
    folder.Write("voices/mei_normal.htsvoice", "");
    const fs::path scratch = folder / "scratch";
    fs::create_directory(scratch);
    const auto voice = *FindOpenJTalk(places, "sakura", 1.5);
    std::size_t frames = 0;
    const auto count = [&](int, std::span<const std::int16_t> samples, BlockStart) {
        frames += samples.size();
    };
    std::string text = "-x $(id) 'こんにちは'。";
    while (text.size() < 2000) text += "曲です。";
    SpeakOpenJTalk(voice, text, scratch, count);
    EXPECT_EQ(frames, 4800u * Chunks(text).size());
    EXPECT_THAT(test::ReadBytes(folder / "calls"),
                testing::HasSubstr("-r 1.50 -fm 3\n-x $(id) 'こんにちは'。"));
    for (const char* end : {"exit 1", "true", "echo no > \"$6\"", "kill -9 $$"}) {
        MakeProgram(end);
        EXPECT_THROW(SpeakOpenJTalk(voice, "曲", scratch, count), std::runtime_error) << end;
        EXPECT_TRUE(fs::is_empty(scratch));
    }
}

TEST_F(OpenJTalkTest, StretchesAreShortAndLoseNothing) {
    for (const std::string unit : {"あ", "曲です。", "Hello! "}) {
        std::string text, together;
        while (text.size() < 5000) text += unit;
        for (const auto chunk : Chunks(text)) {
            EXPECT_LE(chunk.size(), 900u);
            EXPECT_TRUE(chunk.ends_with(unit)) << unit;
            together += chunk;
        }
        EXPECT_EQ(together, text);
    }
}

}  // namespace
}  // namespace sorakaze::speech
