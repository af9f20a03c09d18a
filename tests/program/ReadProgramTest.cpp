// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

using test::TestShow;

/// The lines of a variant joined by "|".
std::string Variant(const BlockRef& block, std::int32_t variant) {
    std::string lines;
    for (std::int32_t i = 0; i <= Block::kUpperBound; ++i) {
        const String& cell = (*block)(i, variant);
        if (!cell.IsEmpty()) lines += (lines.empty() ? "" : "|") + cell.Bytes();
    }
    return lines;
}

struct Loaded : TestShow {
    explicit Loaded(const std::string& file) { Load(file); }
    void Load(const std::string& file) {
        folder.Write("Programs/Show.txt", file);
        window.readProgram("Show");
    }
};

TEST(ReadProgram, ReadsAWholeScript) {
    Loaded show(
        "\xEF\xBB\xBF# the morning show\r\n"
        "program: Morning Drive\r\nstation:\tRadio Sample\r\nband: 80.0 # FM\r\n"
        "personality: Alex Parker\r\nMODE: songs 5\r\n\r\n"
        "opening: 0, say Good morning, this is [[station]].\r\nopening: 0, play [[iTunes]]\r\n"
        "Opening: 1, play Sounds/a.aiff\r\nopening:1,wait\t3\r\n"
        "intro: 0, say Next.\r\nintrow: 0, say Hm.\r\njingle: 2, play x\r\nending: 0, say Bye.");
    auto& w = show.window;
    EXPECT_EQ(w.program.Bytes() + "|" + w.station.Bytes() + "|" + w.band.Bytes(),
              "Morning Drive|Radio Sample|80.0");
    EXPECT_EQ(w.personality.Bytes() + "|" + w.mode.Bytes(), "Alex Parker|songs 5");
    EXPECT_FALSE(w.isJapaneseOn);
    EXPECT_EQ(Variant(w.opening, 0), "say Good morning, this is [[station]].|play [[iTunes]]");
    EXPECT_EQ(Variant(w.opening, 1), "play Sounds/a.aiff|wait 3");
    EXPECT_EQ(Variant(w.intro, 0) + Variant(w.IntroW, 0) + Variant(w.jingle, 2) + Variant(w.ending, 0),
              "say Next.say Hm.play xsay Bye.");
    EXPECT_EQ(w.openingCount, 1);
}

TEST(ReadProgram, KeysCountAnywhereAndTheCutTakesTheFront) {
    const struct {
        const char* line;
        const char* opening;
        const char* intro = "";
        const char* station = "";
        int count = 0;
    } cases[] = {
        {"intro: 0, say On the station: sunshine", "", "say On the station: sunshine", "sunshine", 7},
        {"intro: 0, say Hi # station: no", "", "say Hi", "", 7},
        {"opening: 0, say The ending: bye", "say The ending: bye"},
        {"x opening: 2, say Hi", "say Hi"},
        {"opening: 3 say Hi", "", "", "", 3},
        {"opening: say Hi, there", "there"},
        {"opening: 4,", "", "", "", 4},
        {"opening: 0.9, say a, b", "say a, b"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        TestShow show(c.line);
        show.window.openingCount = 7;
        show.window.readProgram("Show");
        EXPECT_EQ(Variant(show.window.opening, 0), c.opening);
        EXPECT_EQ(Variant(show.window.intro, 0), c.intro);
        EXPECT_EQ(Variant(show.window.ending, 0), "") << "a later key sees the cut line";
        EXPECT_EQ(show.window.station.Bytes(), c.station);
        EXPECT_EQ(show.window.openingCount, c.count);
    }
}

TEST(ReadProgram, WhatALoadKeepsAndResets) {
    std::string eleven;
    for (int i = 0; i <= 10; ++i) eleven += "jingle: 1, wait " + std::to_string(i) + "\n";
    const std::string file =
        "mode: all\nopening: 1, say b\nopening: 0, say a\nopening: 10, say ten\n" + eleven;
    Loaded show(file);
    auto& w = show.window;
    w.wikiHistory = {"somebody"};
    EXPECT_EQ(w.openingCount, 10);
    EXPECT_EQ(Variant(w.jingle, 1), "wait 0|wait 1|wait 2|wait 3|wait 4|wait 5|wait 6|wait 7|wait 8|wait 9");
    show.Load(file);
    EXPECT_EQ(Variant(w.opening, 0), "say a");
    EXPECT_EQ(Variant(w.opening, 10), "say ten|say ten") << "variant 10 is never cleared";
    EXPECT_TRUE(w.wikiHistory.empty());
    for (int i = 0; i < 12; ++i) show.Load(file);
    EXPECT_EQ(std::ranges::count(Variant(w.opening, 10), '|'), 9) << "it grows to ten lines";
    EXPECT_EQ(w.openingCount, 0) << "a dropped line leaves the counter alone";
    show.Load("# nothing\nj_personality: Haruka\npersonality: Anna Parker\nprogram: a program: b");
    EXPECT_TRUE(w.isJapaneseOn);
    EXPECT_EQ(w.j_personality.Bytes() + w.personality.Bytes() + w.program.Bytes(), "HarukaAnna Parkera");
    EXPECT_EQ(w.mode.Bytes(), "all");
    EXPECT_EQ(w.openingCount, 0);
    EXPECT_EQ(w.jingleCount, 1);
    EXPECT_EQ(Variant(w.opening, 0) + Variant(w.opening, 1) + Variant(w.jingle, 1), "");
    show.Load("personality: Anna Parker\nj_personality:");
    EXPECT_EQ(w.j_personality.Bytes() + w.personality.Bytes(), "") << "the later line holds both keys";
}

TEST(ReadProgram, BadFiles) {
    TestShow show;
    auto& w = show.window;
    for (const char* number : {"-1", "11", "1e99"}) {
        show.folder.Write("Programs/Bad.txt", std::string("intro: 0, say kept\nopening: ") + number +
                                                  ", say x\nintro: 1, say lost");
        EXPECT_THROW(w.readProgram("Bad"), OutOfBoundsException) << number;
        EXPECT_EQ(Variant(w.intro, 0) + Variant(w.intro, 1), "say kept") << number;
    }
    std::filesystem::create_directories(show.folder.Path() / "Programs/Folder.txt");
    EXPECT_THROW(w.readProgram("Folder"), NilObjectException);

    show.folder.Write("Programs/OneLine.txt", "opening: 0, say " + std::string(10 << 20, 'x'));
    w.readProgram("OneLine");
    EXPECT_EQ(LenB((*w.opening)(0, 0)), (10 << 20) + 4);
}

}  // namespace
}  // namespace sorakaze
