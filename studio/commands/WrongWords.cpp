// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/commands/WrongWords.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

#include "base/NearestWord.h"

namespace sorakaze::studio {
namespace {

constexpr std::size_t kMostSlips = 3;

std::string Quoted(std::string_view word) {
    return "\"" + std::string(word) + "\"";
}

/// " Did you mean WORD?", if there is one so near that it is no guess.
std::string Suggestion(std::string_view word, const std::vector<std::string>& known) {
    const std::vector<std::string_view> words(known.begin(), known.end());
    for (const auto candidate : words)
        if (word.size() > 2 && candidate.starts_with(word))
            return " Did you mean " + std::string(candidate) + "?";
    const auto nearest = FindNearestWord(word, words, std::min(kMostSlips, word.size() / 2));
    return nearest && nearest->only ? " Did you mean " + std::string(nearest->word) + "?" : "";
}

std::vector<std::string> SubcommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* sub : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(sub->get_name());
    return names;
}

std::string Joined(const std::vector<std::string>& names) {
    std::string joined;
    for (const auto& name : names) joined += (joined.empty() ? "" : ", ") + name;
    return joined;
}

/// Of the program or of a sub-command.
std::string HelpCall(const CLI::App& command) {
    const bool isSub = command.get_parent() != nullptr;
    return " Try: sorakaze-studio " + (isSub ? command.get_name() + " " : std::string()) + "--help";
}

std::vector<std::string> OptionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

std::string WrongOption(const CLI::App& command, const std::string& name) {
    const std::string suggestion = Suggestion(name, OptionNames(command));
    return command.get_name() + " has no option " + name + "." + suggestion +
           (suggestion.empty() ? HelpCall(command) : "");
}

/// Of the words after a sub-command's name.
std::string WrongOptionAmong(const CLI::App& command, const std::vector<std::string>& words) {
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        const std::string& word = words[i];
        if (!word.starts_with("-") || word == "-") continue;
        const std::string name = word.substr(0, word.find('='));
        const CLI::Option* const option = command.get_option_no_throw(name);
        if (!option) return WrongOption(command, name);
        if (name == word && option->get_items_expected_max() > 0) ++i;  // its value
    }
    return {};
}

}  // namespace

std::string DescribeWrongWord(const CLI::App& app, const std::vector<std::string>& words) {
    if (words.empty())
        return "A sub-command is missing: " + Joined(SubcommandNames(app)) + "." + HelpCall(app);
    const std::string& first = words.front();
    if (first.starts_with("-")) return app.get_option_no_throw(first) ? "" : WrongOption(app, first);
    const auto names = SubcommandNames(app);
    if (std::find(names.begin(), names.end(), first) == names.end()) {
        const std::string suggestion = Suggestion(first, names);
        return "There is no sub-command " + Quoted(first) + "." + suggestion +
               (suggestion.empty() ? " There are: " + Joined(names) + "." : "");
    }
    return WrongOptionAmong(*app.get_subcommand(first), {words.begin() + 1, words.end()});
}

std::string DescribeParseError(const CLI::App& app, const CLI::ParseError& error) {
    const auto parsed = app.get_subcommands();
    const CLI::App& command = parsed.empty() ? app : *parsed.front();
    const auto extras = app.remaining(true);
    std::string text = error.what();
    if (!extras.empty())
        text = command.get_name() + " does not take the word " + Quoted(extras.front()) +
               ": a name with blanks in it stands in quotation marks";
    constexpr std::string_view kUnconverted = "Could not convert: ";
    if (text.starts_with(kUnconverted)) text = "This is not a number: " + text.substr(kUnconverted.size());
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && extras.empty())
        text = text.substr(0, text.find(':')) + " needs a value";
    if (!text.ends_with('.')) text += '.';
    return text + HelpCall(command);
}

}  // namespace sorakaze::studio
