// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The editors' files are well formed, and the grammar takes the sample programs' lines for what they are.
#include <expat.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "program/grammar/Grammars.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::grammar {
namespace {

/// Which of the grammar's top patterns takes the line: its place in the list.
std::size_t PatternOf(const nlohmann::json& grammar, const std::string& line) {
    const auto& patterns = grammar.at("patterns");
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        if (!patterns[i].contains("begin") && !patterns[i].contains("match")) continue;
        const std::string text = patterns[i].value("begin", patterns[i].value("match", "")).substr(4);
        if (std::regex_search(line, std::regex(text, std::regex::icase))) return i;
    }
    return patterns.size();
}

TEST(Grammars, AreWellFormed) {
    const std::string xml = KateSyntax();
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    EXPECT_EQ(XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1), XML_STATUS_OK)
        << XML_ErrorString(XML_GetErrorCode(parser.get())) << " in line "
        << XML_GetCurrentLineNumber(parser.get());
    EXPECT_EQ(nlohmann::json::parse(CodeExtension()).at("contributes").at("grammars")[0].at("scopeName"),
              nlohmann::json::parse(TextMateGrammar()).at("scopeName"));
}

TEST(Grammars, KnowTheLinesOfTheSamplePrograms) {
    const auto grammar = nlohmann::json::parse(TextMateGrammar());
    const std::size_t wrong = grammar.at("patterns").size() - 1;
    for (const auto& file : std::filesystem::directory_iterator(SAMPLE_PROGRAMS)) {
        std::istringstream lines(test::ReadBytes(file.path()));
        for (std::string line; std::getline(lines, line);) {
            if (line.empty() || line[0] == '#') continue;
            EXPECT_LT(PatternOf(grammar, line), wrong) << line;
        }
    }
    for (const char* line :
         {"opning: 0, say Hi", "opening: 0 say Hi", "opening: 11, say Hi", "opening: 0, sya Hi", "Hi"})
        EXPECT_EQ(PatternOf(grammar, line), wrong) << line;
}

}  // namespace
}  // namespace sorakaze::grammar
