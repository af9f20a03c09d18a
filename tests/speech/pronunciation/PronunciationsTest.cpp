// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "host/SpeakableNames.h"
#include "process/PronunciationPlaces.h"
#include "speech/pronunciation/Pronunciations.h"
#include "speech/pronunciation/ReadPronunciations.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

TEST(Pronunciations, ReplaceNamesWordByWord) {
    const PronunciationFile file = ParsePronunciations(
        "\xEF\xBB\xBF# names\r\nKe$ha = Kesha\r\n\r\nJay-Z=jay zee # Mister Carter\nAC/DC = A B\nA B = C D\n"
        "Prince = preence\nprince & the revolution = the band\n!!! = chick\n\"#1 = x\" = quoted\ndon = dawn\n"
        "ロス = loss\n東 = higashi\nÉtoile = aytwahl\nsade = one\nSADE = two\nEuro = yen\n"
        "[de]\nsade = drei\n[en-gb]\nsade = four\n[all]\nwill.i.am = will\n[]\nsade = none\n");
    ASSERT_EQ(file.faults.size(), 1U);
    EXPECT_EQ(file.faults[0].line, 24U);
    EXPECT_EQ(file.faults[0].what, "a section is a language such as [de], or [all]");
    const struct {
        const char *language, *text, *said;
    } cases[] = {
        {"en", "by ke$ha, and KE$HA's", "by Kesha, and Kesha's"},
        {"en", "jayz, jay-z, jay z", "jay zee, jay zee, jay z"},
        {"en", "ac/dc", "A B"},  // which isn't replaced again
        {"en", "a b", "C D"},
        {"en", "prince, princess, prince & the  revolution live", "preence, princess, the band live"},
        {"en", "!!! wow!!!! !!!", "chick wow!!!! chick"},
        {"en", "it is #1 = x.", "it is quoted."},
        {"en", "don't don, o'don", "don't dawn, o'don"},
        {"en", "サンロスの don東京", "サンlossの dawn東京"},
        {"en", "étoile ÉTOILE ｋｅ＄ｈａ", "aytwahl aytwahl Kesha"},
        {"en-us", "sade", "two"},
        {"de", "sade", "drei"},
        {"en-gb-scotland", "sade", "four"},
        {"", "sade", "two"},
        {"ja", "will.i.am. will.i.amx", "will. will.i.amx"},
        {"en", "\xFFke$ha\xFE \xE3\x81", "\xFFKesha\xFE \xE3\x81"},
        {"en", "", ""}};
    for (const auto& [language, text, said] : cases)
        EXPECT_EQ(Pronunciations({file}, language).Apply(text), said) << language;
    const PronunciationFile own = ParsePronunciations("SADE = mine");
    EXPECT_EQ(Pronunciations({own, file}, "de").Apply("sade"), "mine") << "the first file comes first";
}

TEST(Pronunciations, FaultyLinesAreLeftOut) {
    const struct {
        std::string line;
        const char* fault;
    } cases[] = {{"no sign", "there is no \"=\""},
                 {"= x", "there is no name before \"=\""},
                 {"- = x", "there is no name before \"=\""},
                 {"x =", "there is no spelling after \"=\""},
                 {"\"x = y", "the name's second quote is missing"},
                 {"\"x\" y", "there is no \"=\" after the name"},
                 {"x\xFF = y", "the line isn't UTF-8"},
                 {"x = \x1B[0m", "the line holds control characters"},
                 {std::string(101, 'x') + " = y", "the name is too long"},
                 {"y = " + std::string(201, 'x'), "the spelling is too long"},
                 {"x = $(reboot)", "a spelling can't hold any of $ ` \\ \" [ ] < >"},
                 {"[d", "a section is a language such as [de], or [all]"},
                 {"\xFF\xFEx", "the file is UTF-16; save it as UTF-8"}};
    for (const auto& [line, fault] : cases) {
        const PronunciationFile file = ParsePronunciations(line);
        EXPECT_TRUE(file.entries.empty()) << line;
        ASSERT_EQ(file.faults.size(), 1U) << line;
        EXPECT_EQ(file.faults[0].what, fault);
    }
}

TEST(Pronunciations, HugeFileIsBounded) {
    const test::TemporaryFolder folder;
    const fs::path path = folder.Path() / "Pronunciations.txt";
    {
        std::ofstream out(path);
        for (int i = 0; i < 1'000'000; ++i) out << "a" << i << " = a" << i + 1 << '\n';
    }
    const PronunciationFile file = ReadPronunciationFile(path);
    EXPECT_EQ(file.entries.size(), kMostPronunciations);
    EXPECT_EQ(FaultLine(file),
              "Pronunciations.txt: the file is too long, only its first 20000 pronunciations are used");
    std::string text, said;
    for (int i = 0; i < 10'000; ++i) {
        text += "a" + std::to_string(i) + ' ';
        said += "a" + std::to_string(i + 1) + ' ';
    }
    EXPECT_EQ(Pronunciations({file}, "en").Apply(text), said);
    EXPECT_EQ(FaultLine(ReadPronunciationFile(folder.Path())), "Pronunciations.txt: the file can't be read");
    EXPECT_EQ(FaultLine(ReadPronunciationFile(folder.Path() / "none")), "");
}

TEST(Pronunciations, ShippedListHasNoFault) {
    const PronunciationFile file = ReadPronunciationFile(fs::path(SHIPPED_FOLDER) / "Pronunciations.txt");
    EXPECT_EQ(FaultLine(file), "");
    EXPECT_GE(file.entries.size(), 300U);
}

TEST(SpeakableNames, OnlyListedNamesWithShellCharactersChange) {
    const test::TemporaryFolder station;
    const fs::path resources = station.Path() / "Sorakaze.app/Contents/Resources";
    fs::create_directories(resources);
    std::ofstream(station.Path() / "Pronunciations.txt") << "Ke$ha = Kesha\nSade = shah-day\n";
    std::ofstream(resources / "Pronunciations.txt") << "Ke$ha = wrong\nA$AP = ASAP\n[de]\n`lo = hello\n";
    const player::TrackText text{"Sade & Ke$ha $(reboot) `ls`", "A$AP Rocky", "$5", "A$APs", "", "`lo"};
    EXPECT_EQ(SpeakableNames(text, resources).Record(),
              "Sade & Kesha $(reboot) `ls`\tASAP Rocky\t$5\tA$APs\t\thello");
    EXPECT_EQ(process::PronunciationFiles(resources).size(), 2U);
    EXPECT_EQ(process::PronunciationFiles(station.Path()).size(), 1U) << "no application around it";
}

}  // namespace
}  // namespace sorakaze::speech
