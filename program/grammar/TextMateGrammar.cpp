// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <nlohmann/json.hpp>

#include "program/grammar/Grammars.h"
#include "program/grammar/Patterns.h"

namespace sorakaze::grammar {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kIgnoreCase = "(?i)";
constexpr const char* kScope = "text.sorakaze-program";

Json Match(const std::string& pattern, const std::string& name) {
    return {{"match", kIgnoreCase + pattern}, {"name", name}};
}

Json Include(const char* name) {
    return {{"include", std::string("#") + name}};
}

/// A line from its key to its end, or to its comment.
Json Line(const std::string& begin, const Json& captures, const Json& patterns) {
    return {{"begin", kIgnoreCase + begin},
            {"beginCaptures", captures},
            {"end", "(?=#)|$"},
            {"patterns", patterns}};
}

Json Named(const char* name) {
    return {{"name", name}};
}

Json Command(const std::string& verb, const Json& patterns) {
    return Line("^\\s*(" + BlockPattern() + ")(:)\\s*(" + kVariant + ")\\s*(,)\\s*(" + verb + ")(?=\\s|#|$)",
                {{"1", Named("keyword.control.block")},
                 {"2", Named("punctuation.separator")},
                 {"3", Named("constant.numeric.variant")},
                 {"4", Named("punctuation.separator")},
                 {"5", Named("support.function.verb")}},
                patterns);
}

Json Header(const std::string& key, const Json& patterns) {
    return Line("^\\s*(" + key + ")(:)",
                {{"1", Named("entity.name.tag")}, {"2", Named("punctuation.separator")}}, patterns);
}

}  // namespace

std::string TextMateGrammar() {
    const Json placeholders = Json::array({Include("placeholder"), Include("wrong-placeholder")});
    Json grammar{
        {"name", "Sorakaze program"},
        {"scopeName", kScope},
        {"fileTypes", Json::array()},
        {"patterns",
         Json::array({Include("comment"),
                      Header("mode", Json::array({Match(ModePattern(), "support.constant.mode"),
                                                  Match("[0-9.]+", "constant.numeric")})),
                      Header(HeaderPattern(), placeholders), Command("sayj?", placeholders),
                      Command("wait", Json::array({Match("[0-9]+(?:\\.[0-9]+)?", "constant.numeric"),
                                                   Include("placeholder")})),
                      Command("play", Json::array({Match(TrackPattern(), "variable.language.track"),
                                                   Include("placeholder"), Include("wrong-placeholder"),
                                                   Match("[^\\s#\\[]+", "string.unquoted.path")})),
                      Match("^\\s*[^\\s#][^#]*", "invalid.illegal.line")})},
        {"repository",
         {{"comment", Match("#.*$", "comment.line.number-sign")},
          {"placeholder", Match(PlaceholderPattern(), "variable.other.placeholder")},
          {"wrong-placeholder", Match(kAnyPlaceholder, "invalid.illegal.placeholder")}}}};
    return grammar.dump(2) + "\n";
}

std::string CodeExtension() {
    Json extension{{"name", "sorakaze-program"},
                   {"displayName", "Sorakaze programs"},
                   {"description", "Colours for the show scripts of Sorakaze"},
                   {"version", "0.1.0"},
                   {"publisher", "sorakaze"},
                   {"license", "GPL-3.0-or-later"},
                   {"engines", {{"vscode", "^1.60.0"}}},
                   {"categories", Json::array({"Programming Languages"})},
                   {"contributes",
                    {{"languages", Json::array({{{"id", "sorakaze-program"},
                                                 {"aliases", Json::array({"Sorakaze program"})},
                                                 {"filenamePatterns", Json::array({"**/Programs/*.txt"})},
                                                 {"configuration", "./language-configuration.json"}}})},
                     {"grammars", Json::array({{{"language", "sorakaze-program"},
                                                {"scopeName", kScope},
                                                {"path", "./sorakaze-program.tmLanguage.json"}}})},
                     {"problemMatchers",
                      Json::array({{{"name", "sorakaze-check"},
                                    {"owner", "sorakaze"},
                                    {"fileLocation", Json::array({"autoDetect", "${workspaceFolder}"})},
                                    {"pattern",
                                     {{"regexp", "^(.+?):(\\d+):(\\d+): (error|warning): (.*)$"},
                                      {"file", 1},
                                      {"line", 2},
                                      {"column", 3},
                                      {"severity", 4},
                                      {"message", 5}}}}})}}}};
    return extension.dump(2) + "\n";
}

}  // namespace sorakaze::grammar
