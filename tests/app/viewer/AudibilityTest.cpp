// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// When a page counts as heard. That the engine runs the script, and when it tells, is tried by
// scripts/try-viewer.
#include <gtest/gtest.h>

#include <QRegularExpression>

#include "app/viewer/AudibleLines.h"
#include "app/viewer/program/Audibility.h"

namespace sorakaze::viewer {
namespace {

TEST(Audibility, FollowsTheElementsAndElseTheEngine) {
    const struct {
        const char* name;
        std::string
            steps;  ///< +- elements, 10 the engine's word, x the renderer's end, ? a page that pretends
        std::string told;
    } cases[] = {{"an element, and what the engine says of it", "+01-00", "10"},
                 {"two that overlap", "++1--0", "10"},
                 {"one after the other", "+1-+-0", "1010"},
                 {"sounds without an element", "01000100", "1010"},
                 {"the page hangs and its element's end is never told", "+10", "10"},
                 {"its end is told late", "+010-+-", "1010"},
                 {"the renderer is gone", "++x+-", "1010"},
                 {"a page that pretends", "?", ""}};
    for (const auto& [name, steps, expected] : cases) {
        std::string told;
        Audibility audibility([&told](bool audible) { told += audible ? '1' : '0'; });
        const auto secret = QRegularExpression("log\\(\"(.*)\\+\"\\)").match(audibility.Script()).captured(1);
        ASSERT_GT(secret.size(), 20);
        for (const char step : steps) {
            if (step == '+' || step == '-') audibility.OnConsole(secret + QChar(step));
            if (step == '0' || step == '1') audibility.OnEngine(step == '1');
            if (step == 'x') audibility.OnRendererEnd();
            if (step == '?') audibility.OnConsole("+");
        }
        EXPECT_EQ(told, expected) << name;
    }
}

TEST(AudibleLines, OnlyWholeLinesOfTheTwoWordsMeanSomething) {
    const std::pair<std::string, std::optional<bool>> cases[] = {
        {"audible\n", true},
        {"silent\n", false},
        {"audible\nsilent\n", false},
        {"audible", std::nullopt},
        {"xaudible\n", std::nullopt},
        {"audible \n", std::nullopt},
        {std::string(1000, 'x') + "audible\n", std::nullopt},
        {std::string("\0\n\xff\n\naudible\n", 13), true}};
    for (const auto& [bytes, expected] : cases) {
        AudibleLines whole, single;
        std::optional<bool> last;
        for (const char byte : bytes)
            if (const auto audible = single.Read({&byte, 1})) last = audible;
        EXPECT_EQ(whole.Read(bytes), expected) << bytes;
        EXPECT_EQ(last, expected) << bytes;
    }
}

}  // namespace
}  // namespace sorakaze::viewer
