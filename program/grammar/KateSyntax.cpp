// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/check/Words.h"
#include "program/grammar/Grammars.h"
#include "program/grammar/Patterns.h"

namespace sorakaze::grammar {
namespace {

std::string Rule(const std::string& kind, const std::string& details) {
    return "      <" + kind + " " + details + "/>\n";
}

std::string Context(const std::string& name, const std::string& style, const std::string& rules,
                    const std::string& more = "lineEndContext=\"#pop!Line\"") {
    return "    <context name=\"" + name + "\" attribute=\"" + style + "\" " + more + ">\n" + rules +
           "    </context>\n";
}

std::string Pattern(const std::string& expression, const std::string& style, const std::string& context) {
    return Rule("RegExpr", "String=\"" + expression + "\" insensitive=\"true\" attribute=\"" + style +
                               "\" context=\"" + context + "\"");
}

/// Before every other rule: a comment begins anywhere.
std::string Comment() {
    return Rule("DetectChar", "char=\"#\" attribute=\"Comment\" context=\"Comment\"");
}

std::string Placeholders() {
    return Pattern(PlaceholderPattern(), "Placeholder", "#stay") + Pattern(kAnyPlaceholder, "Error", "#stay");
}

std::string Contexts() {
    const std::string blanks = Rule("DetectSpaces", "");
    const std::string wrong = Pattern("[^\\s]", "Error", "Wrong");
    return Context("Line", "Text",
                   blanks + Comment() + Pattern("mode:", "Key", "Mode") +
                       Pattern(HeaderPattern() + ":", "Key", "Value") +
                       Pattern(BlockPattern() + ":", "Block", "Variant") + wrong,
                   "lineEndContext=\"#stay\"") +
           Context("Comment", "Comment", "") + Context("Wrong", "Error", Comment()) +
           Context("Value", "Text", Comment() + Placeholders()) +
           Context("Mode", "Text",
                   blanks + Comment() + Pattern(ModePattern(), "Verb", "#stay") +
                       Rule("Int", "attribute=\"Number\" context=\"#stay\"") + wrong) +
           Context("Variant", "Text", blanks + Comment() + Pattern(kVariant, "Number", "Comma") + wrong) +
           Context("Comma", "Text",
                   blanks + Comment() + Rule("DetectChar", "char=\",\" context=\"Command\"") + wrong) +
           Context("Command", "Text",
                   blanks + Comment() + Pattern("sayj?(?= |\\t|$)", "Verb", "Spoken") +
                       Pattern("wait(?= |\\t|$)", "Verb", "Wait") +
                       Pattern("play(?= |\\t|$)", "Verb", "Sound") + wrong) +
           Context("Spoken", "Text", Comment() + Placeholders()) +
           Context("Wait", "Text",
                   blanks + Comment() + Placeholders() +
                       Rule("Float", "attribute=\"Number\" context=\"#stay\"") +
                       Rule("Int", "attribute=\"Number\" context=\"#stay\"")) +
           Context("Sound", "Sound",
                   Comment() + Pattern(TrackPattern(), "Placeholder", "#stay") + Placeholders());
}

std::string Styles() {
    std::string styles;
    for (const auto& [name, style] : {std::pair{"Text", "dsNormal"},
                                      {"Comment", "dsComment"},
                                      {"Key", "dsAttribute"},
                                      {"Block", "dsKeyword"},
                                      {"Number", "dsDecVal"},
                                      {"Verb", "dsFunction"},
                                      {"Placeholder", "dsVariable"},
                                      {"Sound", "dsString"},
                                      {"Error", "dsError"}}) {
        styles += std::string("      <itemData name=\"") + name + "\" defStyleNum=\"" + style + "\"/>\n";
    }
    return styles;
}

}  // namespace

std::string KateSyntax() {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!-- SPDX-FileCopyrightText: The Sorakaze developers\n"
           "     SPDX-License-Identifier: GPL-3.0-or-later -->\n"
           "<language name=\"Sorakaze program\" section=\"Other\" version=\"1\" kateversion=\"5.0\" "
           "extensions=\"\" "
           "license=\"GPL-3.0-or-later\">\n"
           "  <highlighting>\n    <contexts>\n" +
           Contexts() + "    </contexts>\n    <itemDatas>\n" + Styles() +
           "    </itemDatas>\n  </highlighting>\n"
           "  <general>\n    <comments>\n      <comment name=\"singleLine\" start=\"#\"/>\n    </comments>\n"
           "    <keywords casesensitive=\"0\"/>\n  </general>\n</language>\n";
}

}  // namespace sorakaze::grammar
