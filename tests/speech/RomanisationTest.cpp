// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

/// A show whose reader of kanji prints `output` whatever it is asked.
struct RomanisationTest : testing::Test {
    void Print(const std::string& output) {
        show.folder.Write(program,
                          "#!/bin/sh\n[ $# = 2 ] && [ \"$1\" = -o ] && cat <<'end'\n" + output + "\nend\n");
        std::filesystem::permissions(program, std::filesystem::perms::all);
    }

    test::TestShow show;
    const std::filesystem::path program = show.folder.Path() / "Sorakaze.app/Contents/Resources/SayKotoeri";
};

TEST_F(RomanisationTest, ReadingsAreSpeltByTheTable) {
    const std::pair<const char*, const char*> cases[] = {
        // Line ends go first; three commas are a pair and one.
        {"か\nき,,,く", "kaki  ku"},
        {"きょう,は,,てんき", "kyou ha tennki"},
        {"がっこう", "gakkou"},
        {"ざっし", "zasshi"},
        {"みっつ", "mittsu"},
        {"まっちゃ", "maccha"},
        {"こっち", "kocchi"},
        {"ちょっと", "chotto"},
        {"っあ", "ltua"},
        {"いっぬ", "iltunu"},
        {"っっか", "kkka"},
        {"あっ", "a"},
        {"っ", ""},
        {"がっ,こう", "galtu kou"},
        {"っカ", "ltuカ"},
        {"っ、", ",,"},
        {"っ。", ".."},
        {"っー", "--"},
        {"あんない", "annnai"},
        {"しんぶん", "shinnbunn"},
        {"らーめん", "ra-menn"},
        {"ゃ", "ゃ"},
        {"ぐぁ", "gula"},
        {"うぉ", "ulo"},
        {"ゔぁいおりん", "vaiorinn"},
        {"てぃっしゅ", "thisshu"},
        {"", ""},
        {"っ\xFFん,ＡＢ漢", "ltu\xFFnn ＡＢ漢"}};
    for (const auto& [output, romaji] : cases) {
        Print(output);
        EXPECT_EQ(show.window.kanji2roma("東京").Bytes(), romaji) << output;
    }
}

TEST_F(RomanisationTest, EachMultibyteRunIsReadByItself) {
    Print("とうきょうっ");
    const std::pair<const char*, const char*> cases[] = {
        {"Hello, World! 42", "Hello, World! 42"},
        {"東京 大阪!", "toukyou toukyou!"},
        {"\xE6東\xFF", "\xE6toukyou\xFF"},  // stray bytes are single ones
        {"$(reboot)`京`\"", "$(reboot)`toukyou`\""},
    };
    for (const auto& [text, romaji] : cases) {
        EXPECT_EQ(show.window.convertRoma(text).Bytes(), romaji) << text;
    }
    std::filesystem::remove(program);
    EXPECT_EQ(show.window.convertRoma("a東京b").Bytes(), "ab");
}

TEST_F(RomanisationTest, NoTitleHasMoreRunsThanCanBeRead) {
    show.folder.Write(program, "#!/bin/sh\necho か\n");
    std::filesystem::permissions(program, std::filesystem::perms::all);
    std::string text;
    for (int i = 0; i < 400; ++i) text += "雲a";
    const std::string romaji = show.window.convertRoma(text + "雲").Bytes();
    EXPECT_EQ(std::ranges::count(romaji, 'a') - std::ranges::count(romaji, 'k'), 400);
    EXPECT_LE(std::ranges::count(romaji, 'k'), 150);
    EXPECT_TRUE(romaji.starts_with("kaa"));
    EXPECT_TRUE(romaji.ends_with("aaaa")) << "as with a program that prints nothing";
}

TEST_F(RomanisationTest, TheTableHasNoRowThatHidesALaterOne) {
    const auto& kana = show.window.kanaArray;
    ASSERT_EQ(kana.size(), 167u);
    ASSERT_EQ(show.window.romeArray.size(), 167u);
    for (std::size_t row = 0; row < kana.size(); ++row) {
        for (std::size_t later = row + 1; later < kana.size(); ++later)
            EXPECT_FALSE(kana[later].Bytes().starts_with(kana[row].Bytes())) << kana[row] << kana[later];
    }
}

}  // namespace
}  // namespace sorakaze
