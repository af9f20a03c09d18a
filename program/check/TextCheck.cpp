// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Placeholders in commands.
#include <algorithm>
#include <array>

#include "base/Ascii.h"
#include "program/check/Draft.h"
#include "program/check/Slips.h"

namespace sorakaze::check {
namespace {

struct Brackets {
    std::string_view open;
    std::string_view close;
};
/// The right ones first.
constexpr std::array<Brackets, 7> kBrackets{
    {{"[[", "]]"}, {"[", "]"}, {"{{", "}}"}, {"{", "}"}, {"<", ">"}, {"［［", "］］"}, {"［", "］"}}};

bool IsTrackText(std::string_view name) {
    return name == "song" || name == "name" || name == "album" || name == "artistinfo";
}

std::string InBrackets(std::string_view name) {
    return "[[" + std::string(name) + "]]";
}

/// Why the placeholder says nothing in that block, or the wrong thing; empty if all is well.
std::string WhyEmpty(Draft& draft, const Command& command, std::string_view name) {
    const auto* const header = std::ranges::find(words::kHeaders, name);
    if (header != words::kHeaders.end()) {
        const auto& known = draft.headers[static_cast<std::size_t>(header - words::kHeaders.begin())];
        const bool japanese = name == "personality" && draft.Header(words::Header::JPersonality);
        if (!known && !japanese) return "is empty, since no line sets " + std::string(name);
    }
    if (command.block == BlockName::Opening && IsTrackText(name))
        return "is empty in an opening: no track is prepared yet";
    if (command.block == BlockName::Ending && IsTrackText(name))
        return "is of the track after the last one, which isn't played";
    if (command.block == BlockName::Intro && name == "artistinfo")
        return "is empty in an intro block: introW is drawn when something is known";
    return {};
}

void CheckKnown(Draft& draft, const Command& command, Span span, std::string_view name) {
    const std::string why = WhyEmpty(draft, command, name);
    if (!why.empty())
        draft.findings.Warn(command.line, span, "empty-placeholder", InBrackets(name) + " " + why);
}

void TellOfUnknown(Draft& draft, const Command& command, Span span, const std::optional<Meant>& meant) {
    const std::string_view written = draft.Text(command.line, span);
    if (ascii::Lowered(written) == "[[" + ascii::Lowered(words::kTrack) + "]]") {
        draft.findings.Error(
            command.line, span, "unknown-placeholder",
            "a line of its own starts the track: play " + std::string(written) + "; here it stays as it is");
        return;
    }
    auto& finding = draft.findings.Error(command.line, span, "unknown-placeholder",
                                         Quoted(written) + " is not a placeholder and stays as it is" +
                                             (meant ? DidYouMean(InBrackets(meant->word)) : std::string()));
    if (meant) finding.fix = Fix{span, InBrackets(meant->word), false};
}

/// Tells of the text in brackets at `at`; returns where to go on.
std::size_t CheckBrackets(Draft& draft, const Command& command, std::size_t at, const Brackets& brackets) {
    const std::string_view line = draft.Line(command.line);
    const std::string_view rest = line.substr(at, command.text.end - at);
    const bool right = brackets.open == "[[";
    std::size_t close = rest.find(brackets.close, brackets.open.size());
    std::size_t end = close + brackets.close.size();
    if (close == std::string_view::npos && right) {
        close = std::min(rest.find_first_of("] ,.!?"), rest.size());
        end = close + (rest.substr(close).starts_with(']') ? 1 : 0);
    } else if (close == std::string_view::npos) {
        return at + brackets.open.size();
    }
    const std::string_view inside = rest.substr(brackets.open.size(), close - brackets.open.size());
    const Span span{at, at + end};
    const std::string name = ascii::Lowered(ascii::Trimmed(Narrowed(inside), " "));
    const auto* const known = std::ranges::find(words::kPlaceholders, name);
    if (right && known != words::kPlaceholders.end() && ascii::Lowered(inside) == name &&
        rest.substr(close).starts_with(brackets.close)) {
        CheckKnown(draft, command, span, *known);
    } else if (known != words::kPlaceholders.end()) {
        TellOfUnknown(draft, command, span, Meant{*known});
    } else if (right) {
        TellOfUnknown(draft, command, span, FindMeant(name, words::kPlaceholders, words::kOtherPlaceholders));
    } else {
        return at + brackets.open.size();
    }
    return span.end;
}

}  // namespace

void CheckPlaceholders(Draft& draft, const Command& command) {
    const std::string_view line = draft.Line(command.line).substr(0, command.text.end);
    for (std::size_t at = command.text.begin; at < line.size();) {
        const auto* const brackets = std::ranges::find_if(
            kBrackets, [&](const Brackets& each) { return line.substr(at).starts_with(each.open); });
        at = brackets == kBrackets.end() ? at + 1 : CheckBrackets(draft, command, at, *brackets);
    }
}

}  // namespace sorakaze::check
