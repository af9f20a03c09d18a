// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "app/runtime/Exceptions.h"
#include "app/runtime/RegEx.h"
#include "app/runtime/String.h"

namespace sorakaze {
namespace {

TEST(Text, EqualityFoldsCaseAndNothingElse) {
    const struct {
        const char* a;
        const char* b;
        bool equal;
    } cases[] = {
        {"Stopped", "sTOPPED", true},   {"ÄÖÜ é", "äöü É", true}, {"ΣΑΣ", "σας", true}, {"\u212A", "k", true},
        {"\u017F", "S", true},          {"が", "か", false},      {"ひ", "ヒ", false},  {"é", "e", false},
        {"e\u0301", "é", false},        {"a", "ab", false},       {"", "", true},       {"ß", "ss", false},
        {"\xFF\xFE", "\xFF\xFE", true}, {"\xFF", "\xFE", false},  {"İ", "i", false},    {"ａ", "Ａ", true},
        {"\xE3\x81", "あ", false},
    };
    for (const auto& c : cases) EXPECT_EQ(String(c.a) == String(c.b), c.equal) << c.a << " / " << c.b;
}

TEST(Text, CountsCharactersAndStrayBytes) {
    const struct {
        std::string text;
        int characters;
    } cases[] = {{"", 0},
                 {"abc", 3},
                 {"あいう", 3},
                 {"aあ\xFF"
                  "b",
                  4},
                 {"\xE3\x81", 2},
                 {"\xF0\x9F\x8E\xB5", 1},
                 {"\xED\xA0\x80", 3},
                 {"\xC0\x80", 2},
                 {"0123456789あ0123456789", 21}};
    for (const auto& c : cases) {
        EXPECT_EQ(Len(c.text), c.characters) << c.text;
        EXPECT_EQ(LenB(c.text), static_cast<int>(c.text.size()));
    }
}

TEST(Text, LeftAndMidCutAtCharacters) {
    EXPECT_EQ(Left("あいう", 2).Bytes(), "あい");
    EXPECT_EQ(Left("ab", 5).Bytes(), "ab");
    EXPECT_EQ(Left("ab", -1).Bytes(), "");
    EXPECT_EQ(Mid("あいう", 2).Bytes(), "いう");
    EXPECT_EQ(Mid("あいう", 2, 1).Bytes(), "い");
    EXPECT_EQ(Mid("abc", 4).Bytes(), "");
    EXPECT_EQ(Mid("abc", 9, 2).Bytes(), "");
    EXPECT_EQ(Mid("abc", 0).Bytes(), "abc");
    EXPECT_EQ(Mid("abc", 2, -3).Bytes(), "");
}

TEST(Text, InStrFindsWithoutRegardToCase) {
    EXPECT_EQ(InStr("Opening: 0", "opening:"), 1);
    EXPECT_EQ(InStr("x あ Opening:", "OPENING:"), 5);
    EXPECT_EQ(InStr("aXaX", "x"), 2);
    EXPECT_EQ(InStr(3, "aXaX", "x"), 4);
    EXPECT_EQ(InStr(0, "aXaX", "x"), 2);
    EXPECT_EQ(InStr("abc", "d"), 0);
    EXPECT_EQ(InStr("abc", ""), 0);
    EXPECT_EQ(InStr("", "a"), 0);
    EXPECT_EQ(InStr("日本のÄpfel", "äPF"), 4);
    EXPECT_EQ(InStr("テスト。カナ", "カナ"), 5);
    EXPECT_EQ(InStr("a\u212A"
                    "b",
                    "kb"),
              2)
        << "a character of another length that folds to the same";
    EXPECT_EQ(InStr("aaaaaaaaab", "aab"), 8);
}

TEST(Text, SearchAgreesWithAPlainOneOnRandomTexts) {
    const std::string parts[] = {"a", "A", "s", "K", "\u212A", "\u017F", "é", "É", "あ", "\xFF", "b", " "};
    std::mt19937 numbers(7);
    const auto draw = [&](std::size_t most) {
        std::string text;
        for (std::size_t n = numbers() % (most + 1); n > 0; --n) text += parts[numbers() % std::size(parts)];
        return String(text);
    };
    for (int round = 0; round < 20000; ++round) {
        const String text = draw(60);
        const String find = round % 50 == 0 ? draw(50) : draw(3);
        std::int32_t plain = 0;
        for (std::int32_t i = 1; !find.IsEmpty() && plain == 0 && i <= Len(text); ++i) {
            if (Mid(text, i, Len(find)) == find) plain = i;
        }
        ASSERT_EQ(InStr(text, find), plain) << text << " / " << find;
    }
}

TEST(Text, FieldsSplitAndReplace) {
    EXPECT_EQ(NthField("a.txt", ".TXT", 1).Bytes(), "a");
    EXPECT_EQ(NthField("a.txt", ".bak", 1).Bytes(), "a.txt");
    EXPECT_EQ(NthField("a,b,c", ",", 3).Bytes(), "c");
    EXPECT_EQ(NthField("a,b,c", ",", 4).Bytes(), "");
    EXPECT_EQ(NthField("a,b", ",", 0).Bytes(), "");
    EXPECT_EQ(NthField("program: a program: b", "program:", 2).Bytes(), " a ");
    EXPECT_EQ(Split("a, b,c, ", ", ").size(), 3u);
    EXPECT_EQ(Split("", ", ").size(), 0u);
    EXPECT_EQ(ReplaceAll("[[SONG]]-[[song]]", "[[song]]", "X").Bytes(), "X-X");
    EXPECT_EQ(ReplaceAll("aaa", "aa", "b").Bytes(), "ba");
    EXPECT_EQ(ReplaceAll("aXa", "x", "").Bytes(), "aa");
    EXPECT_EQ(ReplaceAll("a", "", "b").Bytes(), "a");
    EXPECT_EQ(Replace("aXaX", "x", "-").Bytes(), "a-aX");
    EXPECT_EQ(ReplaceAll("\xE3\x81 x", "X", "y").Bytes(), "\xE3\x81 y");
}

TEST(Text, TrimLowercaseAndCharacters) {
    EXPECT_EQ(Trim(" \t\r\n a b \xE3\x80\x80").Bytes(), "a b");
    EXPECT_EQ(Trim("\xE3\x80\x80\xC2\xA0").Bytes(), "");
    EXPECT_EQ(Trim("\x80 ").Bytes(), "\x80");
    EXPECT_EQ(Lowercase("ÄB\xFFШ日K").Bytes(), "äb\xFFш日k");
    EXPECT_EQ(Chr(9).Bytes(), "\t");
    EXPECT_EQ(Chr(0x3042).Bytes(), "あ");
    EXPECT_EQ(Chr(0xD800).Bytes(), "");
    EXPECT_EQ(Chr(-1).Bytes(), "");
}

TEST(Text, NumbersOutAndIn) {
    EXPECT_EQ(Str(-7).Bytes(), "-7");
    EXPECT_EQ(Str(12.0).Bytes(), "12");
    EXPECT_EQ(Str(-3.0).Bytes(), "-3");
    EXPECT_EQ(Str(-0.0).Bytes(), "0");
    EXPECT_EQ(Str(2.5).Bytes(), "2.5");
    EXPECT_EQ(Str(0.1).Bytes(), "0.1");
    EXPECT_EQ(Str(1e15).Bytes(), "1000000000000000");
    const struct {
        const char* text;
        double value;
    } cases[] = {{"", 0},     {"12 songs", 12}, {"words", 0},   {" 2.5", 2.5}, {"-3x", -3},
                 {"+4", 4},   {".5", 0.5},      {"1e2", 100},   {"1e", 1},     {"inf", 0},
                 {"nan", 0},  {"-", 0},         {"+-5", 0},     {"-inf", 0},   {"1,000", 1},
                 {"0x10", 0}, {"5.", 5},        {"1e-9999", 0}, {"--1", 0}};
    for (const auto& c : cases) EXPECT_EQ(Val(c.text), c.value) << c.text;
    EXPECT_EQ(Val("-1e999"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(ToInt32(1.9), 1);
    EXPECT_EQ(ToInt32(-1.9), -1);
    EXPECT_EQ(ToInt32(1e300), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ToInt32(Val("-1e999")), std::numeric_limits<std::int32_t>::min());
}

TEST(Text, ConvertEncodingGivesUtf8) {
    EXPECT_EQ(ConvertEncoding("Ünï 日本", Encodings::UTF8).Bytes(), "Ünï 日本");
    EXPECT_EQ(ConvertEncoding("Bj\xF6rk \x93x\x94", Encodings::UTF8).Bytes(), "Björk “x”");
}

TEST(RegEx, ReplacesMatches) {
    RegEx pattern;
    pattern.SearchPattern = "(\\(|（).*?(\\)|）)";
    EXPECT_EQ(pattern.Replace("a (b) c (d)").Bytes(), "a  c (d)");
    pattern.Options.ReplaceAllMatches = true;
    const struct {
        const char* target;
        const char* result;
    } cases[] = {{"Song (Live) - Remix", "Song  - Remix"},
                 {"歌（live) x", "歌 x"},
                 {"a (b\tc) d", "a  d"},
                 {"open ( only", "open ( only"},
                 {"(a)(b)", ""},
                 {"\xFF(a)\xE3\x81", "\xFF\xE3\x81"},
                 {"", ""}};
    for (const auto& c : cases) EXPECT_EQ(pattern.Replace(c.target).Bytes(), c.result) << c.target;
    pattern.SearchPattern = "x*";
    pattern.ReplacementPattern = "-";
    EXPECT_EQ(pattern.Replace("あb").Bytes(), "-あ-b-") << "empty matches move on by a character";
}

TEST(RegEx, BadAndRunawayPatterns) {
    RegEx pattern;
    pattern.SearchPattern = "(";
    try {
        pattern.Replace("a");
        FAIL() << "a pattern that can't be compiled must raise";
    } catch (const RegExException& error) {
        EXPECT_FALSE(error.Message().empty());
    }
    pattern.SearchPattern = "(a+)+$";
    const String runaway = std::string(5000, 'a') + "!";
    EXPECT_EQ(pattern.Replace(runaway).Bytes(), runaway.Bytes());
    pattern.SearchPattern = "(\\(|（).*?(\\)|）)";
    const String brackets = std::string(1000000, '(');
    EXPECT_EQ(pattern.Replace(brackets).Bytes(), brackets.Bytes());
}

}  // namespace
}  // namespace sorakaze
