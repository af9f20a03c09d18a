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
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"Stopped", "sTOPPED", true},   {"ÄÖÜ é", "äöü É", true}, {"ΣΑΣ", "σας", true}, {"\u212A", "k", true},
        {"\u017F", "S", true},          {"が", "か", false},      {"ひ", "ヒ", false},  {"é", "e", false},
        {"e\u0301", "é", false},        {"a", "ab", false},       {"", "", true},       {"ß", "ss", false},
        {"\xFF\xFE", "\xFF\xFE", true}, {"\xFF", "\xFE", false},  {"İ", "i", false},    {"ａ", "Ａ", true},
        {"\xE3\x81", "あ", false},
    };
    for (const auto& [a, b, equal] : cases) EXPECT_EQ(String(a) == String(b), equal) << a << " / " << b;
}

TEST(Text, CountsCharactersAndStrayBytes) {
    const std::pair<std::string, int> cases[] = {{"", 0},
                                                 {"あいうx", 4},
                                                 {"\xFF\xE3\x81", 3},
                                                 {"\xF0\x9F\x8E\xB5", 1},
                                                 {"\xED\xA0\x80", 3},
                                                 {"\xC0\x80", 2},
                                                 {"0123456789あ0123456789", 21}};
    for (const auto& [text, characters] : cases) EXPECT_EQ(Len(text), characters) << text;
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

TEST(Text, IsCutSearchedSplitAndReplaced) {
    EXPECT_EQ(Left("あいう", 2).Bytes() + Left("ab", -1).Bytes() + Left("ab", 5).Bytes(), "あいab");
    EXPECT_EQ(Mid("あいう", 2).Bytes() + Mid("あいう", 2, 1).Bytes(), "いうい");
    EXPECT_EQ(Mid("abc", 9, 2).Bytes() + Mid("abc", 2, -3).Bytes() + Mid("abc", 0).Bytes(), "abc");
    EXPECT_EQ(InStr(3, "aXaX", "x"), 4);
    EXPECT_EQ(InStr(0, "aXaX", "x"), 2);
    EXPECT_EQ(NthField("a.txt", ".TXT", 1).Bytes(), "a");
    EXPECT_EQ(NthField("a,b,c", ",", 3).Bytes(), "c");
    EXPECT_EQ(NthField("a,b", ",", 3).Bytes() + NthField("a,b", ",", 0).Bytes(), "");
    EXPECT_EQ(Split("a, b,c, ", ", ").size(), 3u);
    EXPECT_EQ(Split("", ", ").size(), 0u);
    EXPECT_EQ(ReplaceAll("aaa", "aa", "b").Bytes(), "ba");
    EXPECT_EQ(ReplaceAll("a", "", "b").Bytes(), "a");
    EXPECT_EQ(Replace("aXaX", "x", "-").Bytes(), "a-aX");
    EXPECT_EQ(ReplaceAll("\xE3\x81 x", "X", "y").Bytes(), "\xE3\x81 y");
    EXPECT_EQ(Trim(" \t\r\n a b \xE3\x80\x80\xC2\xA0").Bytes(), "a b");
    EXPECT_EQ(Lowercase("ÄB\xFFШ日K").Bytes(), "äb\xFFш日k");
    EXPECT_EQ(Chr(0x3042).Bytes() + Chr(0xD800).Bytes() + Chr(-1).Bytes(), "あ");
    EXPECT_EQ(ConvertEncoding("Bj\xF6rk \x93x\x94", Encodings::UTF8).Bytes(), "Björk “x”");
}

TEST(Text, NumbersOutAndIn) {
    const std::pair<double, const char*> out[] = {
        {-3.0, "-3"}, {-0.0, "0"}, {2.5, "2.5"}, {0.1, "0.1"}, {1e15, "1000000000000000"}};
    for (const auto& [number, text] : out) EXPECT_EQ(Str(number).Bytes(), text);
    const std::pair<const char*, double> in[] = {{"", 0},     {"12 songs", 12}, {"words", 0}, {" 2.5", 2.5},
                                                 {"-3x", -3}, {"+4", 4},        {".5", .5},   {"1e2", 100},
                                                 {"1e", 1},   {"nan", 0},       {"+-5", 0},   {"-inf", 0},
                                                 {"1,0", 1},  {"0x10", 0},      {"5.", 5},    {"1e-9999", 0}};
    for (const auto& [text, number] : in) EXPECT_EQ(Val(text), number) << text;
    EXPECT_EQ(ToInt32(-1.9), -1);
    EXPECT_EQ(ToInt32(1e300), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ToInt32(Val("-1e999")), std::numeric_limits<std::int32_t>::min());
}

TEST(RegEx, ReplacesMatchesAndSurvivesPatterns) {
    RegEx pattern;
    pattern.SearchPattern = "(\\(|（).*?(\\)|）)";
    EXPECT_EQ(pattern.Replace("a (b) c (d)").Bytes(), "a  c (d)");
    pattern.Options.ReplaceAllMatches = true;
    const std::pair<const char*, const char*> cases[] = {{"Song (Live) - Remix", "Song  - Remix"},
                                                         {"歌（live) x", "歌 x"},
                                                         {"open ( only", "open ( only"},
                                                         {"(a)(b)", ""},
                                                         {"\xFF(a)\xE3\x81", "\xFF\xE3\x81"}};
    for (const auto& [target, result] : cases) EXPECT_EQ(pattern.Replace(target).Bytes(), result);
    pattern.SearchPattern = "x*";
    pattern.ReplacementPattern = "-";
    EXPECT_EQ(pattern.Replace("あb").Bytes(), "-あ-b-") << "empty matches move on by a character";
    pattern.SearchPattern = "(";
    EXPECT_THROW(pattern.Replace("a"), RegExException);
    pattern.SearchPattern = "(a+)+$";
    const String runaway = std::string(5000, 'a') + "!";
    EXPECT_EQ(pattern.Replace(runaway).Bytes(), runaway.Bytes());
    pattern.SearchPattern = "(\\(|（).*?(\\)|）)";
    const String brackets = std::string(1000000, '(');
    EXPECT_EQ(pattern.Replace(brackets).Bytes(), brackets.Bytes());
    std::string remarks;
    for (int i = 0; i < 600'000; ++i) remarks += "(a)";
    pattern.ReplacementPattern = "";
    EXPECT_EQ(pattern.Replace(remarks).Bytes(), "") << "within minutes";
}

}  // namespace
}  // namespace sorakaze
