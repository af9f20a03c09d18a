// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/check/PlacedLine.h"

#include <algorithm>
#include <array>

#include "app/runtime/TextSearch.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze::check {
namespace {

/// The first place of the key, or of the next one after `from`.
std::optional<Span> FindKey(std::string_view line, Span within, std::string_view key, std::size_t from) {
    const TextSearch search(Part(line, within), key);
    const auto match = search.Next(from - within.begin);
    if (!match) return {};
    return Span{within.begin + match->begin, within.begin + match->end};
}

using Keys = std::array<std::string, words::kHeaders.size() + words::kBlocks.size()>;

/// With their colons, headers first.
const Keys& AllKeys() {
    static const Keys keys = [] {
        Keys made;
        auto* key = made.data();
        for (const auto name : words::kHeaders) *key++ = std::string(name) + ":";
        for (const auto name : words::kBlocks) *key++ = std::string(name) + ":";
        return made;
    }();
    return keys;
}

void PlaceHeaders(std::string_view line, PlacedLine& placed) {
    for (std::size_t i = 0; i < words::kHeaders.size(); ++i) {
        const auto key = FindKey(line, placed.clean, AllKeys()[i], placed.clean.begin);
        if (!key) continue;
        const auto repeated = FindKey(line, placed.clean, AllKeys()[i], key->end);
        const Span value{key->end, repeated ? repeated->begin : placed.clean.end};
        placed.headers.push_back({static_cast<words::Header>(i), *key, Trimmed(line, value), repeated});
    }
}

/// Each key that is found cuts its length off the front of what later keys are looked for in.
void PlaceCommands(std::string_view line, PlacedLine& placed) {
    Span rest = placed.clean;
    for (std::size_t i = 0; i < words::kBlocks.size(); ++i) {
        const std::string& text = AllKeys()[words::kHeaders.size() + i];
        const auto key = FindKey(line, rest, text, rest.begin);
        if (!key) continue;
        rest.begin += utf8::OffsetOf(Part(line, rest), text.size());
        PlacedCommand command{static_cast<ProgramLine::BlockName>(i), *key, PlaceCommand(line, rest), 0};
        command.variant = VariantOf(Part(line, command.place.number));
        placed.commands.push_back(std::move(command));
    }
}

}  // namespace

Span Trimmed(std::string_view line, Span span) {
    const std::string_view text = Part(line, span);
    const std::string_view trimmed = unicode::Trimmed(text);
    const auto begin = span.begin + static_cast<std::size_t>(trimmed.data() - text.data());
    return {begin, begin + trimmed.size()};
}

CommandPlace PlaceCommand(std::string_view line, Span rest) {
    const std::size_t comma = Part(line, rest).find(',');
    if (comma == std::string_view::npos) return {Trimmed(line, rest), {}, {rest.end, rest.end}};
    const std::size_t at = rest.begin + comma;
    return {Trimmed(line, {rest.begin, at}), at, Trimmed(line, {at + 1, rest.end})};
}

std::int32_t VariantOf(std::string_view number) {
    return ToInt32(Val(String(number)));
}

std::string Stored(std::string_view line, Span span) {
    std::string text(Part(line, span));
    std::ranges::replace(text, '\t', ' ');
    return text;
}

PlacedLine PlaceLine(std::string_view line) {
    PlacedLine placed;
    const std::size_t comment = line.find('#');
    if (comment != std::string_view::npos) placed.comment = comment;
    placed.clean = Trimmed(line, {0, std::min(comment, line.size())});
    if (Part(line, placed.clean).find(':') == std::string_view::npos) return placed;
    PlaceHeaders(line, placed);
    PlaceCommands(line, placed);
    return placed;
}

std::vector<std::string_view> SplitLines(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    std::vector<std::string_view> lines;
    do {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        lines.push_back(text.substr(0, end));
        const bool both = text.substr(end).starts_with("\r\n");
        text.remove_prefix(std::min(end + (both ? 2 : 1), text.size()));
    } while (!text.empty());
    return lines;
}

}  // namespace sorakaze::check
