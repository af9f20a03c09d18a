// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The sample programs keep the rules that make a program sound right: what breaks them isn't an error, the
// show only falls silent or talks about the wrong thing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "program/check/CheckProgram.h"
#include "program/check/Draft.h"
#include "station/synth/StationSounds.h"
#include "tests/support/TestShow.h"

namespace sorakaze::station {
namespace {

using testing::Contains;
namespace fs = std::filesystem;

/// What a program may play: the tracks, the station's sounds and their folders.
std::set<std::string> Playable() {
    std::set<std::string> made{"[[iTunes]]"};
    for (const StationSound& sound : StationSounds()) {
        const fs::path path = fs::path("Sounds") / sound.file;
        made.insert(path);
        if (path.parent_path() != "Sounds") made.insert(path.parent_path());
    }
    return made;
}

/// How many lines of the program belong to blocks. Each line means one thing.
std::size_t CountBlockLines(const std::string& program) {
    static const std::vector<String> keys = {"program:", "station:", "band:",  "personality:", "mode:",
                                             "opening:", "introW:",  "intro:", "jingle:",      "ending:"};
    constexpr std::ptrdiff_t kHeaders = 5;
    std::size_t count = 0;
    for (const String& whole : Split(program, "\n")) {
        const String line = Replace(Trim(NthField(whole, "#", 1)), "j_", "");
        if (line.IsEmpty()) continue;
        SCOPED_TRACE(line);
        const auto key = std::ranges::find(keys, NthField(line, ":", 1) + ":");
        EXPECT_NE(key, keys.end());
        for (const String& other : keys) EXPECT_EQ(InStr(2, line, other), 0) << other;
        if (key - keys.begin() >= kHeaders) ++count;
        // The shell that runs the voice takes these for its own.
        EXPECT_EQ(line.Bytes().find_first_of("$`\\\"\t"), std::string::npos);
    }
    return count;
}

std::vector<std::string> Variant(Block& block, int number) {
    std::vector<std::string> lines;
    for (int i = 0; i <= Block::kLastLine && !block(i, number).IsEmpty(); ++i)
        lines.push_back(block(i, number).Bytes());
    return lines;
}

void CheckVariant(const std::vector<std::string>& lines, bool isIntro, bool isJapanese) {
    static const std::set<std::string> playable = Playable();
    if (isIntro) {
        EXPECT_THAT(lines, Contains("play [[iTunes]]"));
    }
    EXPECT_FALSE(lines.back().starts_with("play Sounds")) << "it would be faded out at once";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        SCOPED_TRACE(lines[i]);
        const std::string verb = lines[i].substr(0, lines[i].find(' '));
        if (verb == "play") {
            EXPECT_THAT(playable, Contains(lines[i].substr(5)));
        } else if (verb == "sayj") {
            const bool waits = i + 1 < lines.size() && lines[i + 1].starts_with("wait ");
            EXPECT_TRUE(waits || (isIntro && i + 1 == lines.size())) << "cut off by what follows";
        }
        EXPECT_THAT((std::set<std::string>{isJapanese ? "sayj" : "say", "play", "wait"}), Contains(verb));
    }
}

TEST(Programs, KeepTheRules) {
    for (const auto& file : fs::directory_iterator(fs::path(STATION_SOURCE) / "Programs")) {
        SCOPED_TRACE(file.path());
        const std::string text = test::ReadBytes(file);
        check::Surroundings anywhere;
        for (const auto& finding : check::CheckProgram(text, anywhere))
            ADD_FAILURE() << finding.line << ": " << finding.message;
        test::TestShow show(text);
        auto& w = show.window;
        w.readProgram("Show");
        EXPECT_NE(w.isJapaneseOn ? Len(w.j_personality) : InStr(w.personality, " "), 0) << "selects no voice";
        std::size_t count = 0;
        for (const auto& [block, last] :
             {std::pair(w.opening, w.openingCount), std::pair(w.intro, w.introCount),
              std::pair(w.IntroW, w.introWCount), std::pair(w.jingle, w.jingleCount),
              std::pair(w.ending, w.endingCount)}) {
            EXPECT_GE(last, 1) << "one variant is none to choose from";
            for (int number = 0; number <= Block::kUpperBound; ++number) {
                const auto lines = Variant(*block, number);
                count += lines.size();
                EXPECT_EQ(lines.empty(), number > last) << "variants are drawn up to the last line's";
                if (!lines.empty())
                    CheckVariant(lines, block == w.intro || block == w.IntroW, w.isJapaneseOn);
            }
        }
        EXPECT_EQ(count, CountBlockLines(text)) << "a variant's eleventh line is dropped";
    }
}

/// The words by which the interpreter recognises such a command.
std::string VerbOf(check::Command::Kind kind) {
    using Kind = check::Command::Kind;
    static const std::map<Kind, std::string> verbs{{Kind::Say, "say"},
                                                   {Kind::Sayj, "sayj"},
                                                   {Kind::PlayFile, "play"},
                                                   {Kind::PlayTrack, "play [[iTunes]]"},
                                                   {Kind::Wait, "wait"}};
    const auto found = verbs.find(kind);
    return found == verbs.end() ? "?" : found->second;
}

TEST(Programs, AreReadByTheCheckerAsByTheLoader) {
    for (const auto& file : fs::directory_iterator(fs::path(STATION_SOURCE) / "Programs")) {
        std::string text = test::ReadBytes(file) + "\nstation: Another # again\nending: 4, wait 1\n";
        for (int i = 0; i < 12; ++i) text += "\tJingle: 0 , wait " + std::to_string(i) + "\n";
        for (const char* end : {"\n", "\r\n", "\r"}) {
            SCOPED_TRACE(file.path().string() + (end[0] == '\r' ? ", other line ends" : ""));
            const std::string written = ReplaceAll(text, "\n", end).Bytes();
            check::Surroundings anywhere;
            check::Draft draft{anywhere, check::SplitLines(written), {}, {}, {}, {}, {}};
            CheckKeys(draft);
            CheckCommands(draft);
            test::TestShow show(written);
            auto& w = show.window;
            w.readProgram("Show");

            const auto headerText = [&](words::Header header) {
                // "j_personality:" holds the other key, which the checker doesn't count as written.
                const bool both = header == words::Header::Personality && !draft.Header(header);
                const auto& line = draft.Header(both ? words::Header::JPersonality : header);
                return line ? line->text : "";
            };
            const std::pair<words::Header, const String&> headers[] = {
                {words::Header::Program, w.program},
                {words::Header::Station, w.station},
                {words::Header::Band, w.band},
                {words::Header::Personality, w.personality},
                {words::Header::JPersonality, w.j_personality},
                {words::Header::Mode, w.mode}};
            for (const auto& [header, value] : headers) EXPECT_EQ(headerText(header), value.Bytes());
            // In the order of BlockName.
            const std::pair<BlockRef, std::int32_t> blocks[] = {{w.opening, w.openingCount},
                                                                {w.IntroW, w.introWCount},
                                                                {w.intro, w.introCount},
                                                                {w.jingle, w.jingleCount},
                                                                {w.ending, w.endingCount}};
            std::map<const Block*, std::int32_t> last;
            std::map<std::pair<const Block*, int>, std::vector<std::string>> texts;
            for (const check::Command& command : draft.commands) {
                Block& block = *blocks[static_cast<std::size_t>(command.block)].first;
                auto& stored = texts[{&block, command.variant}];
                if (stored.size() == words::kMostLines) continue;
                const auto row = static_cast<std::int32_t>(stored.size());
                stored.push_back(check::Stored(draft.Line(command.line), command.text));
                EXPECT_EQ(block.Origin(row, command.variant).line, static_cast<int>(command.line));
                EXPECT_THAT(stored.back(), testing::StartsWith(VerbOf(command.kind)));
                last[&block] = command.variant;
            }
            for (std::size_t i = 0; i < std::size(blocks); ++i) {
                const auto& [block, highest] = blocks[i];
                EXPECT_EQ(last[block.get()], highest);
                for (int number = 0; number <= Block::kUpperBound; ++number) {
                    const auto lines = Variant(*block, number);
                    EXPECT_EQ((texts[{block.get(), number}]), lines);
                    const std::size_t counted = draft.lineCounts[i][static_cast<std::size_t>(number)];
                    EXPECT_EQ(std::min(counted, words::kMostLines), lines.size());
                }
            }
        }
    }
}

}  // namespace
}  // namespace sorakaze::station
