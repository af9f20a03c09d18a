// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <fstream>

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

void ExpectReading(const std::string& text, const std::string& reading) {
    const std::string read = Read(text);
    EXPECT_TRUE(read == reading) << text << " is read " << read << " and not " << reading;
}

TEST(Reading, OfTheList) {
    std::ifstream file(READINGS_FILE);
    int count = 0;
    for (std::string line; std::getline(file, line);) {
        const auto tab = line.find('\t');
        if (tab == std::string::npos) continue;
        ExpectReading(line.substr(0, tab), line.substr(tab + 1));
        ++count;
    }
    EXPECT_GT(count, 50);
}

TEST(Reading, OfTheLexiconsEntries) {
    for (const Entry& entry : LexiconEntries()) {
        std::string read = Read(Encode(entry.surface));
        std::string reading = Encode(entry.reading);
        std::erase(read, ',');
        std::erase(reading, ' ');
        EXPECT_TRUE(read == reading) << Encode(entry.surface) << " is read " << read;
    }
}

/// Decomposed kana, invisible characters, compatibility forms, stray bytes.
TEST(Reading, OfCharactersThatAListCantShow) {
    const std::pair<const char*, const char*> cases[] = {
        {"か\u3099っこう", "がっこう"},
        {"\uFA19", "かみ"},
        {"葛\U000E0100城の\u200B夢\uFEFF", "かつらぎ,の,ゆめ"},
        {"", ""},
        {"Cafe\u0301夢", "Café,ゆめ"},
        {"\xFF夢\xE3\x81", "\xFF,ゆめ,\xE3\x81"},
        {"\xED\xA0\x80", "\xED\xA0\x80"},
        {"夢 恋\n愛", "ゆめ こい\nあい"}};
    for (const auto& [text, reading] : cases) ExpectReading(text, reading);
}

/// Nothing is lost of any kind of text at a length that fills the dictionary's buffers.
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

TEST(Reading, AMissingDictionaryIsReported) {
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
    EXPECT_EQ(show.window.convertRoma("한국어 ＡＢ🎵").Bytes(), "hangugeo AB🎵");

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
