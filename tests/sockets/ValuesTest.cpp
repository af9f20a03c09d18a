// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The values that the network's protocols are made of: the map, digests, encodings, binary files.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "app/runtime/BinaryStream.h"
#include "app/runtime/Dictionary.h"
#include "app/runtime/Digests.h"
#include "app/runtime/MemoryBlock.h"
#include "app/runtime/TextStreams.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze {
namespace {

std::string Keys(const Dictionary& map) {
    std::string keys;
    for (std::int32_t i = 0; i < map.Count(); ++i) keys += map.Key(i).Bytes() + ' ';
    return keys;
}

TEST(Dictionary, KeepsOrderAndFirstSpellingAndIgnoresCase) {
    Dictionary map;
    map.SetValue("Zebra", 1);
    map.SetValue("ÄPFEL", "x");
    map.SetValue("\xC3", 3);
    map.SetValue("zebra", "last");
    EXPECT_EQ(Keys(map), "Zebra ÄPFEL \xC3 ");
    EXPECT_EQ(map.Lookup("ZEBRA").Text(), "last");
    EXPECT_TRUE(map.HasKey("äpfel"));
    EXPECT_FALSE(map.HasKey("Äpfe\xC3"));
    EXPECT_EQ(map.Lookup("none", 7).Integer(), 7);
    map.Remove("zEbra");
    map.Remove("none");
    map.SetValue("Zebra", 2);
    EXPECT_EQ(Keys(map), "ÄPFEL \xC3 Zebra ");
    EXPECT_THROW(map.Key(3), OutOfBoundsException);
    EXPECT_THROW(map.Key(-1), OutOfBoundsException);
    map.Clear();
    EXPECT_EQ(map.Count(), 0);
}

/// Against a plain list, and large enough that anything quadratic would be seen as a test without end.
TEST(Dictionary, FindsKeysByPlaceWhateverWasRemoved) {
    Dictionary map;
    std::vector<std::string> model;
    std::mt19937 draw(7);
    for (int step = 0; step < 6000; ++step) {
        if (model.empty() || draw() % 5 < (step < 3000 ? 3u : 2u)) {
            model.push_back("k" + std::to_string(step));
            map.SetValue(model.back(), step);
        } else {
            const std::size_t at = draw() % model.size();
            map.Remove(model[at]);
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
        }
        ASSERT_EQ(map.Count(), static_cast<std::int32_t>(model.size()));
        if (model.empty()) continue;
        const std::size_t at = draw() % model.size();
        ASSERT_EQ(map.Key(static_cast<std::int32_t>(at)).Bytes(), model[at]);
    }
    map.Clear();
    for (int i = 0; i < 100000; ++i) map.SetValue("key " + std::to_string(i), i);
    for (std::int32_t i = 50000; i > 0; --i) map.Remove(map.Key(map.Count() / 2));
    while (map.Count() > 0) map.Remove(map.Key(0));
}

TEST(Texts, CodesNumbersAndEnds) {
    EXPECT_EQ(Asc("A"), 65);
    EXPECT_EQ(Asc("かな"), 0x304B);
    EXPECT_EQ(Asc("\xFF"), 0xFF);
    EXPECT_EQ(Asc(""), 0);
    EXPECT_EQ(Hex(10).Bytes(), "A");
    EXPECT_EQ(Hex(0).Bytes(), "0");
    EXPECT_EQ(Hex(-1).Bytes(), "FFFFFFFF");
    EXPECT_EQ(Format(1, "00000000").Bytes(), "00000001");
    EXPECT_EQ(Format(1234567, "0").Bytes(), "1234567");
    EXPECT_EQ(Format(-2.5, "00").Bytes(), "-03");
    EXPECT_EQ(Format(-0.2, "0").Bytes(), "0");
    EXPECT_EQ(LTrim(" \t\xE3\x80\x80 a b ").Bytes(), "a b ");
    EXPECT_EQ(Right("かなkana", 5).Bytes(), "なkana");
    EXPECT_EQ(Right("ab", 3).Bytes(), "ab");
    EXPECT_EQ(Right("ab", -1).Bytes(), "");
}

TEST(Digests, Md5AndBase64) {
    const MemoryBlock digest(MD5("message digest"));
    std::string hex;
    for (std::int32_t i = 0; i < digest.Size(); ++i) hex += Right("00" + Hex(digest.Byte(i)), 2).Bytes();
    EXPECT_EQ(hex, "F96B697D7CB7938D525A2F31AAF161D0");
    EXPECT_THROW(digest.Byte(16), OutOfBoundsException);
    EXPECT_THROW(digest.Byte(-1), OutOfBoundsException);

    EXPECT_EQ(EncodeBase64("").Bytes(), "");
    EXPECT_EQ(EncodeBase64(std::string("\0\xFFo", 3)).Bytes(), "AP9v");
    EXPECT_EQ(EncodeBase64("light work").Bytes(), "bGlnaHQgd29yaw==");
    const std::string line57(57, 'a');
    EXPECT_EQ(LenB(EncodeBase64(line57)), 76) << "no line break behind the last line";
    EXPECT_EQ(InStr(EncodeBase64(line57 + "a"), "\r\nYQ=="), 77);
    EXPECT_EQ(EncodeBase64("light", 3).Bytes(), "bGl\r\nnaH\r\nQ=");
    EXPECT_EQ(InStr(EncodeBase64(std::string(10 << 20, 'a'), 0), "="), (10 << 20) / 3 * 4 + 3);
}

TEST(Files, TextAndBinaryFilesForWriting) {
    test::TestRuntime test;
    const auto file = GetFolderItem("page.html", kAbsolutePath);
    EXPECT_EQ(file->OpenAsBinaryFile(true), nullptr) << "there is none yet";
    ASSERT_NE(file->CreateTextFile(), nullptr);
    const auto stream = file->OpenAsBinaryFile(true);
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(stream->Write(std::string("a\0\xFF", 3)));
    EXPECT_EQ(std::filesystem::file_size(file->Path()), 3u) << "written at once";
    stream->Close();
    EXPECT_FALSE(stream->Write("late"));
    EXPECT_TRUE(file->OpenAsBinaryFile(true)->Write("b"));
    EXPECT_EQ(std::filesystem::file_size(file->Path()), 3u) << "opening doesn't empty it";
    file->CreateTextFile();
    EXPECT_EQ(std::filesystem::file_size(file->Path()), 0u);
    const auto folder = GetFolderItem("", kAbsolutePath);
    EXPECT_EQ(folder->CreateTextFile(), nullptr);
    EXPECT_EQ(folder->OpenAsBinaryFile(true), nullptr);
    EXPECT_EQ(GetFolderItem("missing/page", kAbsolutePath)->CreateTextFile(), nullptr);
}

}  // namespace
}  // namespace sorakaze
