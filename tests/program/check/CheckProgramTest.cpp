// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Utf8.h"
#include "program/check/CheckProgram.h"
#include "program/check/PlacedLine.h"

namespace sorakaze::check {
namespace {

/// A station with two voices and a speaker, whose sentences take half a second a character.
class SmallStation : public Surroundings {
  public:
    std::optional<Complaint> CheckVoice(const std::string& name) override {
        if (IsVoice(name)) return {};
        return Complaint{Severity::Error, "unknown-voice", "no voice", "Samantha"};
    }
    bool IsVoice(const std::string& name) override { return name == "Alex" || name == "Samantha"; }
    std::optional<Complaint> CheckSpeaker(const std::string& name) override {
        if (name == "Kyoko") return {};
        return Complaint{Severity::Warning, "unknown-speaker", "no speaker", ""};
    }
    std::vector<Complaint> CheckSound(const std::string& argument) override {
        if (argument.starts_with("Sounds/")) return {};
        return {{Severity::Error, "missing-sound", argument, ""}};
    }
    std::optional<double> SpeechSeconds(const std::string&, const std::string& text, double) override {
        return 0.5 * static_cast<double>(utf8::CountCharacters(text));
    }
};

/// "line:column code", of all findings.
std::string Told(const std::string& program) {
    SmallStation station;
    const auto lines = SplitLines(program);
    std::string told;
    for (const Finding& finding : CheckProgram(program, station)) {
        const auto before = lines.at(finding.line - 1).substr(0, finding.span.begin);
        told += (told.empty() ? "" : ", ") + std::to_string(finding.line) + ":" +
                std::to_string(utf8::CountCharacters(before) + 1) + " " + finding.code;
    }
    return told;
}

/// The lines, and after them what they leave out of a right program.
std::string Whole(const std::string& lines) {
    std::string program = lines + "\n";
    for (const char* more : {"mode: songs 5", "intro: 0, play [[iTunes]]", "introW: 0, play [[iTunes]]"}) {
        const std::string line = more;
        if (lines.find(line.substr(0, line.find(' '))) == std::string::npos) program += line + "\n";
    }
    return program;
}

TEST(CheckProgram, TellsEachMistakeOnceAndInItsPlace) {
    const struct {
        const char* lines;
        const char* told;
    } cases[] = {
        // keys
        {"opning: 0, say Hi", "1:1 unknown-key"},
        {"program: A\nstaton: B", "2:1 unknown-key"},
        {"opening : 0, say Hi", "1:1 unknown-key"},
        {"opening：0, say Hi", "1:1 unknown-key"},
        {"ｏpening: 0, say Hi", "1:1 unknown-key"},
        {"opening 0, say Hi", "1:1 missing-colon"},
        {"station Radio", "1:1 missing-colon"},
        {"closing: 0, say Bye", "1:1 unknown-key"},
        {"jpersonality: Kyoko\nopening: 0, sayj a\nopening: 0, wait 1", "1:1 unknown-key"},
        {"  ednig: 0, say Bye", "1:3 unknown-key"},
        {"- opening: 0, say Hi", "1:1 text-before-key"},
        {"program: A\n\xEF\xBB\xBFopening: 0, say Hi", "2:1 text-before-key"},
        {"opening: 0, say Hi\nand good morning", "2:1 no-key"},
        {"＃ a comment", "1:1 no-key"},
        {"// a comment", "1:1 no-key"},
        {"intro: 0, say On the station: now\nintro: 0, play [[iTunes]]\nstation: B", "1:22 key-in-text"},
        {"opening: 0, say The ending: bye", "1:21 key-in-text"},
        {"program: A program: B", "1:12 key-in-text"},
        {"station: A\nstation: B", "2:1 repeated-key"},
        {"station:", "1:1 empty-value"},
        {"opening: 0, say You are #1 tonight", "1:25 text-in-comment"},
        {"opening: 0, say In C#", "1:21 text-in-comment"},
        // numbers
        {"opening: 0 say Hi", "1:11 missing-comma"},
        {"opening: 0 say Hi, there", "1:11 missing-comma"},
        {"opening: 0、say こんばんは", "1:11 missing-comma"},
        {"opening: 0. say Hi", "1:11 missing-comma"},
        {"opening: say Hi, there", "1:10 missing-number"},
        {"opening: , say Hi", "1:10 missing-number"},
        {"opening: one, say Hi", "1:10 bad-number"},
        {"opening: 1.5, say Hi", "1:10 bad-number"},
        {"opening: ０, say Hi", "1:10 bad-number"},
        {"opening: 11, say Hi", "1:10 variant-out-of-range"},
        {"opening: -1, say Hi", "1:10 variant-out-of-range"},
        {"opening: 0,", "1:10 empty-command"},
        {"opening:", "1:8 empty-command"},
        {"opening: 1, say Hi", "1:10 empty-variant"},
        {"opening: 0, say a\nopening: 2, say b", "2:10 empty-variant"},
        {"opening: 0, say a\nopening: 1, say b\nopening: 0, say c", "3:10 never-drawn"},
        {"jingle: 0, wait 1\njingle: 0, wait 1\njingle: 0, wait 1\njingle: 0, wait 1\njingle: 0, wait "
         "1\njingle: 0, wait 1\n"
         "jingle: 0, wait 1\njingle: 0, wait 1\njingle: 0, wait 1\njingle: 0, wait 1\njingle: 0, say eleven",
         "11:9 too-many-lines"},
        // the header
        {"mode: minutes 30", "1:7 bad-mode"},
        {"mode: song 5", "1:7 bad-mode"},
        {"mode: songs two", "1:7 bad-mode"},
        {"mode: songs  5", "1:7 bad-mode"},
        {"mode: songs", "1:7 bad-mode"},
        {"mode:", "1:1 bad-mode"},
        {"mode: forever", "1:7 bad-mode"},
        {"personality: Samantha\nopening: 0, say Hi", "1:14 one-word-voice"},
        {"personality: Samantha　Reed\nopening: 0, say Hi", "1:14 one-word-voice"},
        {"personality: Samanta Reed\nopening: 0, say Hi", "1:14 unknown-voice"},
        {"personality: Alex Po\nj_personality: Kyoko\nopening: 0, say Hi", "2:1 personality-lost"},
        {"j_personality: Kioko\nopening: 0, sayj a\nopening: 0, wait 9", "1:16 unknown-speaker"},
        // commands
        {"opening: 0, sya Hi", "1:13 unknown-verb"},
        {"opening: 0, Good morning", "1:13 unknown-verb"},
        {"opening: 0, say: Hi", "1:13 unknown-verb"},
        {"opening: 0, say　こんばんは", "1:13 unknown-verb"},
        {"opening: 0, wait3", "1:13 unknown-verb"},
        {"opening: 0, pause 3", "1:13 unknown-verb"},
        {"opening: 0, say", "1:13 no-argument"},
        {"opening: 0, play", "1:13 no-argument"},
        {"opening: 0, wait", "1:17 bad-wait"},
        {"opening: 0, wait three", "1:18 bad-wait"},
        {"opening: 0, wait 1,5", "1:18 bad-wait"},
        {"opening: 0, wait ５", "1:18 bad-wait"},
        {"opening: 0, wait 4000", "1:18 long-wait"},
        {"opening: 0, wait 1:30", "1:18 bad-wait"},
        {"intro: 0, [[iTunes]]\nintro: 0, play [[iTunes]]", "1:11 unknown-verb"},
        {"opening: 0, say Hi; play [[iTunes]]", "1:26 unknown-placeholder"},
        {"opening: 0, play [[itune]]", "1:18 unknown-track"},
        {"opening: 0, play iTunes", "1:18 unknown-track"},
        {"opening: 0, play opening.aiff\nopening: 0, wait 3", "1:18 missing-sound"},
        {"station: B\nopening: 0, say This is [[staton]]", "2:25 unknown-placeholder"},
        {"station: B\nopening: 0, say This is [station]", "2:25 unknown-placeholder"},
        {"station: B\nopening: 0, say This is [[station]", "2:25 unknown-placeholder"},
        {"opening: 0, say This is [[station]]", "1:25 empty-placeholder"},
        {"opening: 0, say First, [[song]]", "1:24 empty-placeholder"},
        {"opening: 0, say It costs $5", "1:26 shell"},
        {"opening: 0, say Rock `n Roll", "1:22 shell"},
        {"opening: 0, say To be continued\\", "1:32 shell"},
        {"band: $80\nopening: 0, say It costs [[band]]", "1:7 shell"},
        // blocks
        {"intro: 0, say Next", "1:8 no-track"},
        {"introW: 0, play [[iTunes]]\nintroW: 1, say Next", "2:9 no-track"},
        {"intro: 0, play [[iTunes]]\nintro: 0, play [[iTunes]]", "2:11 second-track"},
        {"jingle: 0, play [[iTunes]]", "1:12 track-in-block"},
        {"opening: 0, play Sounds/a.aiff", "1:13 sound-cut"},
        {"intro: 0, play Sounds/a.aiff\nintro: 0, play [[iTunes]]", "1:11 sound-cut"},
        {"j_personality: Kyoko\nopening: 0, sayj あいうえおかき\nopening: 0, wait 3", "3:18 short-wait"},
        {"j_personality: Kyoko\nopening: 0, sayj あ\nopening: 0, sayj い\nopening: 0, wait 1",
         "2:13 speech-cut"},
    };
    for (const auto& [lines, told] : cases) EXPECT_EQ(Told(Whole(lines)), told) << lines;
    EXPECT_EQ(Told("mode: all\nintroW: 0, play [[iTunes]]"), "1:1 no-intro");
    EXPECT_EQ(Told("mode: all\nintro: 0, play [[iTunes]]"), "1:1 no-intro");
    EXPECT_EQ(Told("mode: all\nintros: 0, play [[iTunes]]\nintroW: 0, play [[iTunes]]"), "2:1 unknown-key");
    EXPECT_EQ(Told("intro: 0, play [[iTunes]]\nintroW: 0, play [[iTunes]]"), "1:1 no-end");
    EXPECT_EQ(Told("# nothing\n\n"), "1:1 empty-program");
}

TEST(CheckProgram, SaysNothingOfARightProgram) {
    for (const char* lines : {
             "# comments: opening: 0, sya what you like\n\n   # station: none\n#opening: 0, say Hi",
             "\xEF\xBB\xBFprogram: A\r\nstation: B\r\nOPENING: 0, SAY This is [[STATION]] with "
             "[[Program]].\r\n",
             "opening:0,say Hi, there, all of you\nopening: 00, wait 2.5",
             "\topening:\t0,\twait\t3",
             "opening: 0, say \"Hello\", he said.\nopening: 0, play \"Sounds/a.aiff\"\nopening: 0, wait 2",
             "opening: 0, say It costs \\$5 or 10$, and \\`that\\` too.",
             "opening: 0, say A note: this is not a key. Time 10:30.",
             "band: 80.0 # FM\nopening: 0, wait 1 # and go\nopening: 0, say Hi. # greeting\nopening: 0, say "
             "Ho.\t#x",
             "mode: minites 30",
             "mode: Songs 5 of them",
             "mode: all",
             "personality: Samantha Reed\nopening: 0, say I am [[personality]].",
             "personality: Alex\nopening: 0, say I am [[personality]].",
             "personality: Parker\nopening: 0, say I am [[personality]].",
             "j_personality: Kyoko\npersonality: Alex Po\nopening: 0, say Hi\nopening: 0, sayj あ\nopening: "
             "0, wait 1",
             "j_personality: Kyoko\nintro: 0, play [[iTunes]]\nintro: 0, sayj [[name]]",
             "intro: 0, say [[song]], [[name]], [[album]], [[trackno]], [[trackleft]].\nintro: 0, play "
             "[[itunes]]\n"
             "introW: 0, say [[artistinfo]]\nintroW: 0, play [[iTunes]]",
             "jingle: 0, play Sounds/jingles\njingle: 0, say Hm.\njingle: 1, wait 1\njingle: 2, wait 3 "
             "seconds",
             "program: say Hi\nopening: 0, [[program]]",
             "ending: 0, say One [1] two {2} three <3>.\nending: 0, wait 1",
             "opening: 0, play [[iTunes]]\nopening: 0, wait 60\nopening: 0, say Hi, on the way.",
             "opening: 0, say Mail to us & to <you>; it's 100% free! Ask why? *",
         }) {
        EXPECT_EQ(Told(Whole(lines)), "") << lines;
    }
}

TEST(CheckProgram, FixesOnlyWhatIsCertain) {
    const struct {
        const char* line;
        bool certain;
    } cases[] = {{"opning: 1, wait 1", true},
                 {"opning: 0, wait 1", true},
                 {"opening: 0, sya Hi", true},
                 // Words, and keys that another line sets.
                 {"opening: 0, day one", false},
                 {"code: 5", false},
                 {"statio: C\nstation: B", false}};
    SmallStation station;
    for (const auto& [line, certain] : cases) {
        const std::string program = Whole(line);
        const auto findings = CheckProgram(program, station);
        ASSERT_FALSE(findings.empty()) << line;
        EXPECT_EQ(findings[0].fix && findings[0].fix->certain, certain) << line;
    }
}

/// What the loader stores of a line, and what the checker takes it for.
std::pair<std::string, std::string> BothReadings(const std::string& line) {
    const ProgramLine loaded = ParseProgramLine(line);
    const PlacedLine placed = PlaceLine(line);
    std::string a;
    std::string b;
    const std::optional<String>* const values[] = {&loaded.program,     &loaded.station,       &loaded.band,
                                                   &loaded.personality, &loaded.j_personality, &loaded.mode};
    for (std::size_t i = 0; i < std::size(values); ++i) {
        if (*values[i]) a += std::to_string(i) + "=" + (*values[i])->Bytes() + "\n";
    }
    for (const auto& header : placed.headers)
        b += std::to_string(static_cast<int>(header.header)) + "=" + Stored(line, header.value) + "\n";
    const auto text = [](auto block, int variant, const std::string& command) {
        return std::to_string(static_cast<int>(block)) + "," + std::to_string(variant) + "," + command + "\n";
    };
    for (const auto& command : loaded.commands)
        a += text(command.block, command.variant, command.text.Bytes());
    for (const auto& command : placed.commands)
        b += text(command.block, command.variant, Stored(line, command.place.text));
    return {a, b};
}

TEST(CheckProgram, ReadsLinesAsTheLoaderDoes) {
    // Lines of everything that means something, in any order: the generator's own steps repeat them.
    const char* const pieces[] = {"opening:",
                                  "introW:",
                                  "INTRO:",
                                  "jingle:",
                                  "ending:",
                                  "program:",
                                  "\xC5\xBFtation:",
                                  "station:",
                                  "band:",
                                  "personality:",
                                  "j_personality:",
                                  "j_",
                                  "mode:",
                                  "0",
                                  "1.5",
                                  "11",
                                  "-1",
                                  ",",
                                  " ",
                                  "\t",
                                  "say ",
                                  "\xE3\x80\x80",
                                  "あ",
                                  "\xE3",
                                  "\x80",
                                  "#",
                                  ":",
                                  "x",
                                  "1e9"};
    std::uint32_t state = 1;
    for (int round = 0; round < 20000; ++round) {
        std::string line;
        for (std::uint32_t count = 1 + round % 12; count > 0; --count) {
            state = state * 1664525 + 1013904223;
            line += pieces[(state >> 16) % std::size(pieces)];
        }
        const auto [loaded, placed] = BothReadings(line);
        ASSERT_EQ(loaded, placed) << line;
    }
}

}  // namespace
}  // namespace sorakaze::check
