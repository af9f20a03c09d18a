// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The sample programs keep the rules that make a program sound right: what breaks them isn't an error, the
// show only falls silent or talks about the wrong thing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "station/synth/StationSounds.h"

namespace sorakaze::station {
namespace {

using testing::Contains;
using testing::HasSubstr;
namespace fs = std::filesystem;

struct Script {
    std::map<std::string, std::string> headers;
    std::map<std::string, std::map<int, std::vector<std::string>>> blocks;
    std::map<std::string, int> lastVariant;
    std::vector<std::string> lines;
};

std::string Lower(std::string text) {
    for (char& byte : text) byte = static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
    return text;
}

std::string Trimmed(const std::string& text) {
    const auto from = text.find_first_not_of(" \t");
    return from == std::string::npos ? "" : text.substr(from, text.find_last_not_of(" \t") - from + 1);
}

Script Read(const fs::path& file) {
    Script script;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        line = Trimmed(line.substr(0, line.find('#')));
        if (line.empty()) continue;
        script.lines.push_back(line);
        const auto colon = line.find(':');
        const std::string key = line.substr(0, colon);
        const std::string value = Trimmed(line.substr(colon + 1));
        if (key == "opening" || key == "intro" || key == "introW" || key == "jingle" || key == "ending") {
            const int variant = std::stoi(value);
            script.blocks[key][variant].push_back(Trimmed(value.substr(value.find(',') + 1)));
            script.lastVariant[key] = variant;
        } else {
            script.headers[key] = value;
        }
    }
    return script;
}

std::vector<fs::path> Programs() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::path(STATION_SOURCE) / "Programs"))
        files.push_back(entry.path());
    return files;
}

class ProgramsTest : public testing::TestWithParam<fs::path> {};

TEST_P(ProgramsTest, KeepsTheRules) {
    const Script script = Read(GetParam());
    const bool japanese = script.headers.contains("j_personality");
    if (japanese) {
        EXPECT_FALSE(script.headers.at("j_personality").empty());
    } else {
        EXPECT_THAT(script.headers.at("personality"), HasSubstr(" ")) << "one word selects no voice";
    }
    for (const char* block : {"opening", "intro", "introW", "jingle", "ending"}) {
        SCOPED_TRACE(block);
        ASSERT_TRUE(script.blocks.contains(block));
        const auto& variants = script.blocks.at(block);
        EXPECT_GE(variants.size(), 2u);
        EXPECT_EQ(script.lastVariant.at(block), static_cast<int>(variants.size()) - 1)
            << "some would never be drawn";
        EXPECT_EQ(variants.rbegin()->first, static_cast<int>(variants.size()) - 1);
        EXPECT_LE(variants.size(), 10u);
        for (const auto& [number, lines] : variants) {
            SCOPED_TRACE(number);
            EXPECT_LE(lines.size(), 10u);
            const bool isIntro = std::string(block).starts_with("intro");
            if (isIntro) {
                EXPECT_THAT(lines, Contains("play [[iTunes]]"));
            }
            EXPECT_FALSE(lines.back().starts_with("play Sounds")) << "it would be faded out at once";
            for (std::size_t i = 0; i < lines.size(); ++i) {
                EXPECT_FALSE(lines[i].starts_with(japanese ? "say " : "sayj ")) << lines[i];
                if (!lines[i].starts_with("sayj ")) continue;
                const bool waits = i + 1 < lines.size() && lines[i + 1].starts_with("wait ");
                EXPECT_TRUE(waits || (isIntro && i + 1 == lines.size())) << "cut off by what follows";
            }
        }
    }
}

TEST_P(ProgramsTest, EveryLineMeansOneThing) {
    const std::vector<std::string> keys = {
        "program:", "station:", "band:",  "personality:", "j_personality:", "mode:",
        "opening:", "introw:",  "intro:", "jingle:",      "ending:"};
    for (const std::string& line : Read(GetParam()).lines) {
        SCOPED_TRACE(line);
        int found = 0;
        for (const auto& key : keys) {
            const auto at = Lower(line).find(key);
            if (at == std::string::npos) continue;
            if (key == "personality:" && line.starts_with("j_")) continue;
            ++found;
            EXPECT_EQ(at, 0u);
        }
        EXPECT_EQ(found, 1);
        // The shell that runs the voice takes these for its own.
        EXPECT_EQ(line.find_first_of("$`\\\"\t"), std::string::npos);
    }
}

TEST_P(ProgramsTest, ItsSoundsAreMade) {
    std::set<std::string> made;
    for (const StationSound& sound : StationSounds()) {
        const fs::path path = fs::path("Sounds") / sound.file;
        made.insert(path.string());
        if (path.parent_path() != "Sounds") made.insert(path.parent_path().string());
    }
    for (const auto& [block, variants] : Read(GetParam()).blocks) {
        for (const auto& [number, lines] : variants) {
            for (const std::string& line : lines) {
                const std::string verb = line.substr(0, line.find(' '));
                EXPECT_THAT((std::set<std::string>{"say", "sayj", "play", "wait"}), Contains(verb)) << line;
                if (verb == "play" && line != "play [[iTunes]]") {
                    EXPECT_THAT(made, Contains(line.substr(5))) << line;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Station, ProgramsTest, testing::ValuesIn(Programs()), [](const auto& program) {
    std::string name = std::to_string(program.index);
    for (const char byte : program.param.stem().string()) {
        if (std::isalnum(static_cast<unsigned char>(byte))) name += byte;
    }
    return name;
});

}  // namespace
}  // namespace sorakaze::station
