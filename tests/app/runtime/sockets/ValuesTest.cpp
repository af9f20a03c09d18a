// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The values that the network's protocols are made of: the map, digests, encodings.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "app/runtime/Dictionary.h"
#include "app/runtime/Digests.h"
#include "app/runtime/MemoryBlock.h"
#include "app/runtime/TextStreams.h"

namespace sorakaze {
namespace {

TEST(Dictionary, KeepsOrderAndFirstSpellingAndIgnoresCase) {
    Dictionary map;
    for (const char* key : {"Zebra", "ÄPFEL", "\xC3", "zebra"}) map.SetValue(key, key);
    EXPECT_EQ(map.Key(0).Bytes(), "Zebra");
    EXPECT_EQ(map.Key(2).Bytes(), "\xC3");
    EXPECT_EQ(map.Lookup("ZEBRA").Text(), "zebra");
    EXPECT_TRUE(map.HasKey("äpfel"));
    EXPECT_FALSE(map.HasKey("Äpfe\xC3"));
    EXPECT_EQ(map.Lookup("none", 7).Integer(), 7);
    map.Remove("none");
    EXPECT_THROW(map.Key(3), OutOfBoundsException);
    EXPECT_THROW(map.Key(-1), OutOfBoundsException);
}

/// Against a plain list, and large enough that anything quadratic would be seen as a test without end.
TEST(Dictionary, FindsKeysByPlaceWhateverWasRemoved) {
    Dictionary map;
    std::vector<std::string> model;
    std::mt19937 draw(7);
    for (int step = 0; step < 6000; ++step) {
        const std::size_t at = model.empty() ? 0 : draw() % model.size();
        if (model.empty() || draw() % 5 < (step < 3000 ? 3u : 2u)) {
            model.push_back("k" + std::to_string(step));
            map.SetValue(model.back(), step);
        } else {
            map.Remove(model[at]);
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
        }
        ASSERT_EQ(map.Count(), static_cast<std::int32_t>(model.size()));
        ASSERT_TRUE(at >= model.size() || map.Key(static_cast<std::int32_t>(at)).Bytes() == model[at]);
    }
    map.Clear();
    for (int i = 0; i < 100000; ++i) map.SetValue("key " + std::to_string(i), i);
    for (std::int32_t i = 50000; i > 0; --i) map.Remove(map.Key(map.Count() / 2));
    while (map.Count() > 0) map.Remove(map.Key(0));
}

TEST(Texts, CodesNumbersAndEnds) {
    EXPECT_EQ(Asc("かな"), 0x304B);
    EXPECT_EQ(Asc("\xFF"), 0xFF);
    EXPECT_EQ(Hex(-1).Bytes(), "FFFFFFFF");
    EXPECT_EQ(Format(1, "00000000").Bytes(), "00000001");
    EXPECT_EQ(Format(-2.5, "00").Bytes(), "-03");
    EXPECT_EQ(Format(-0.2, "0").Bytes(), "0");
    EXPECT_EQ(LTrim(" \t\xE3\x80\x80 a b ").Bytes(), "a b ");
    EXPECT_EQ(Right("かなkana", 5).Bytes(), "なkana");
    EXPECT_EQ(Right("ab", -1).Bytes(), "");
}

TEST(Digests, BytesAndBase64) {
    const MemoryBlock block("\xFE");
    EXPECT_EQ(block.Byte(0), 0xFE);
    EXPECT_THROW(block.Byte(1), OutOfBoundsException);
    EXPECT_THROW(block.Byte(-1), OutOfBoundsException);
    EXPECT_EQ(EncodeBase64(std::string("\0\xFFo", 3)).Bytes(), "AP9v");
    EXPECT_EQ(LenB(EncodeBase64(std::string(57, 'a'))), 76) << "no line break behind the last line";
    EXPECT_EQ(EncodeBase64("light", 3).Bytes(), "bGl\r\nnaH\r\nQ=");
    EXPECT_EQ(InStr(EncodeBase64(std::string(10 << 20, 'a'), 0), "="), (10 << 20) / 3 * 4 + 3);
}

}  // namespace
}  // namespace sorakaze
