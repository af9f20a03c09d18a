// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "base/Utf8.h"
#include "speech/japanese/Characters.h"
#include "speech/kotoeri/ReadingForVoice.h"
#include "speech/say/folders/VoiceLanguage.h"
#include "tests/support/TestShow.h"

namespace sorakaze::kotoeri {
namespace {

std::string Spelt(std::string_view text, const Surroundings& surroundings) {
    return ReadingForVoice(text, surroundings, [](std::string_view part) { return std::string(part); });
}

/// As a show has it: ASCII stays, and each run of other characters goes to the program.
std::string SpeltInRuns(const std::string& text, const Surroundings& surroundings) {
    std::string spelt, run;
    const auto endRun = [&] {
        std::string part = Spelt(run, surroundings);
        std::replace(part.begin(), part.end(), ',', ' ');
        spelt += part;
        run.clear();
    };
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t size = utf8::Read(text, at).size;
        if (size == 1) endRun();
        (size == 1 ? spelt : run).append(text, at, size);
        at += size;
    }
    endRun();
    return spelt;
}

/// Characters for which a shell has a use inside double quotes.
bool HasShellMarks(std::string_view text) {
    return text.find_first_of("\"$`\\") != text.npos;
}

TEST(OtherScripts, TitlesOfTheTable) {
    std::ifstream file(OTHER_SCRIPTS_FILE);
    Surroundings surroundings;
    int count = 0;
    for (std::string line; std::getline(file, line);) {
        constexpr std::string_view kLanguage = "# language: ";
        if (line.starts_with(kLanguage)) surroundings.language = line.substr(kLanguage.size());
        if (line.starts_with('#') || line.empty()) continue;
        std::istringstream fields(line);
        std::string names[2], spelt[2];
        for (auto* field : {&names[0], &names[1], &spelt[0], &spelt[1]}) std::getline(fields, *field, '\t');
        surroundings.record = names[0] + '\t' + names[1];
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(SpeltInRuns(names[i], surroundings), spelt[i])
                << names[i] << ' ' << surroundings.language;
        ++count;
    }
    EXPECT_GT(count, 200);
}

TEST(OtherScripts, ANameThatIsReadInPartsIsChinese) {
    const auto reader = [](std::string_view part) {
        return part == "周杰倫" ? "しゅう杰りん" : std::string(part);
    };
    EXPECT_EQ(ReadingForVoice("周杰倫", {"en", ""}, reader), "jou jie lun");
    EXPECT_EQ(ReadingForVoice("不知火", {"en", ""}, reader), "不知火");
}

/// ICU takes the rules of every script, and none of them makes a mark that is live in a shell.
TEST(OtherScripts, EveryCharacter) {
    for (const char* language : {"en", "ja"}) {
        for (char32_t code = 0x80; code < 0x20000; code += code < 0x3000 ? 1 : 7) {
            if (code >= 0xD800 && code < 0xE000) continue;
            const std::string text = japanese::Encode({&code, 1});
            EXPECT_FALSE(HasShellMarks(Spelt(text, {language, ""}))) << std::hex << int(code);
        }
    }
}

/// These end, and nothing grows beyond what a spelling of a character has.
TEST(OtherScripts, HostileRuns) {
    for (const std::string unit : {"\u0301", "e\u0301", "\U000E0FFF", "\u0378", "\xE0", "\xFF\xC3", "ก", "เ",
                                   "א", "ع", "ы", "ыא", "한", "伦", "𝓗", "क्", "\u200D", "ﷺ", "Ё\u0308"}) {
        std::string text;
        while (text.size() < 10'000) text += unit;
        for (const char* language : {"en", "ja", "ru"}) {
            const std::string spelt = Spelt(text, {language, text});
            EXPECT_LE(spelt.size(), text.size() * 4) << unit << ' ' << language;
        }
    }
}

TEST(OtherScripts, LanguagesOfVoices) {
    test::TemporaryFolder folder;
    folder.Write("Voices/Vera/voice.json", R"({"language": "ru", "names": ["Vera Two"]})");
    folder.Write("Voices/Vera/model.onnx", "x");
    const std::vector<std::filesystem::path> places{folder.Path() / "Voices"};
    const std::pair<const char*, const char*> cases[] = {
        {"Milena", "ru"}, {"MILENA+f3", "ru"}, {"Vera", "ru"},          {"vera two", "ru"},
        {"el", "el"},     {"Alex", "en-us"},   {"No Such Voice", "en"}, {"", "en"}};
    for (const auto& [name, language] : cases)
        EXPECT_EQ(speech::LanguageOfVoiceNamed(name, places), language) << name;
}

/// Through the shell, as a show has it.
TEST(OtherScripts, OfAShow) {
    test::TestShow show;
    std::filesystem::copy_file(KOTOERI_PROGRAM,
                               show.folder.Path() / "Sorakaze.app/Contents/Resources/SayKotoeri");
    show.player.tracks = {{"青花瓷\t周杰伦\t我很忙", 600}, {"Группа крови\tКино\tГруппа крови", 600}};
    const auto prepare = [&] {
        show.window.getNextSong_Run();
        return (show.window.song + "/" + show.window.artist + "/" + show.window.album).Bytes();
    };
    EXPECT_EQ(prepare(), "ching hua tsi/jou jie lun/wo hen mang");
    show.window.personality = "Milena Petrova";
    EXPECT_EQ(prepare(), "группа крови/кино/группа крови");
}

}  // namespace
}  // namespace sorakaze::kotoeri
