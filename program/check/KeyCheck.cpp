// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Which keys a line has, where they are, and what a comment takes away.
#include <algorithm>

#include "base/Ascii.h"
#include "program/check/Draft.h"
#include "program/check/Slips.h"

namespace sorakaze::check {
namespace {

struct FoundKey {
    std::string_view name;
    Span span;
};

bool IsBlank(char byte) {
    return byte == ' ' || byte == '\t';
}

/// A sign within a sentence or a name, which nobody sets before a comment.
void CheckComment(Draft& draft, std::size_t number, const PlacedLine& placed) {
    const std::string_view line = draft.Line(number);
    if (!placed.comment || placed.clean.begin == placed.clean.end) return;
    const std::size_t at = *placed.comment;
    std::size_t blanks = 0;
    while (blanks < at && IsBlank(line[at - 1 - blanks])) ++blanks;
    const char next = at + 1 < line.size() ? line[at + 1] : ' ';
    const bool glued = !IsBlank(next) && next != '#' && next != '-' && next != '=';
    const bool spoken = ascii::Lowered(Part(line, placed.clean)).find("say") != std::string::npos;
    if (!(blanks == 0 && (glued || spoken)) && !ascii::IsDigit(next) &&
        !(blanks == 1 && line[at - 1] == ' ' && glued && spoken))
        return;
    const Span rest = Trimmed(line, {at, line.size()});
    draft.findings.Warn(number, rest, "text-in-comment",
                        Quoted(Part(line, rest)) +
                            " is taken for a comment and left out; a # can't be written, so spell it out");
}

std::vector<FoundKey> KeysOf(const PlacedLine& placed) {
    std::vector<FoundKey> keys;
    bool japanese = false;
    for (const PlacedHeader& header : placed.headers) {
        japanese = japanese || header.header == words::Header::JPersonality;
        keys.push_back({words::kHeaders[static_cast<std::size_t>(header.header)], header.key});
        if (header.repeated) keys.push_back({keys.back().name, *header.repeated});
    }
    for (const PlacedCommand& command : placed.commands) keys.push_back({NameOf(command.block), command.key});
    // "personality:" is a part of "j_personality:".
    if (japanese) {
        std::vector<std::size_t> ends;
        for (const auto& key : keys) {
            if (key.name == words::kHeaders[4]) ends.push_back(key.span.end);
        }
        std::erase_if(keys, [&](const FoundKey& key) {
            return key.name == words::kHeaders[3] && std::ranges::find(ends, key.span.end) != ends.end();
        });
    }
    return keys;
}

void TellOfKeyInText(Draft& draft, std::size_t number, const PlacedLine& placed, const FoundKey& key) {
    std::string message = Quoted(std::string(key.name) + ":") + " counts as a key here too";
    for (const PlacedHeader& header : placed.headers) {
        if (header.key == key.span) {
            message +=
                " and sets " + std::string(key.name) + " to " + Quoted(draft.Text(number, header.value));
        } else if (header.repeated == key.span) {
            message = "the value ends here, at the second " + Quoted(std::string(key.name) + ":");
        }
    }
    draft.findings.Error(number, key.span, "key-in-text", message + "; write the word without its colon");
}

void TakeHeader(Draft& draft, std::size_t number, words::Header header, Span key, Span value) {
    auto& known = draft.Header(header);
    const std::string name(words::kHeaders[static_cast<std::size_t>(header)]);
    if (known) {
        draft.findings.Warn(
            number, key, "repeated-key",
            "line " + std::to_string(known->line) + " sets " + name + ", too; the last one counts");
    }
    known = HeaderLine{number, key, value, Stored(draft.Line(number), value)};
    auto& personality = draft.Header(words::Header::Personality);
    if (header != words::Header::JPersonality) return;
    if (personality && personality->text != known->text) {
        draft.findings.Error(number, key, "personality-lost",
                             "j_personality sets personality, too, so the " + Quoted(personality->text) +
                                 " of line " + std::to_string(personality->line) +
                                 " is lost; put j_personality above personality");
    }
}

/// The line as the key `name` has it, whose value or number is in `rest`.
void TakeLine(Draft& draft, std::size_t number, std::string_view name, Span key, Span rest) {
    const auto* const block = std::ranges::find(words::kBlocks, name);
    if (block != words::kBlocks.end()) {
        CheckNumber(draft, number, static_cast<BlockName>(block - words::kBlocks.begin()), rest);
        return;
    }
    const auto* const header = std::ranges::find(words::kHeaders, name);
    TakeHeader(draft, number, static_cast<words::Header>(header - words::kHeaders.begin()), key,
               Trimmed(draft.Line(number), rest));
}

/// Whether a line sets the header, so that a second one is hardly meant.
bool IsSet(Draft& draft, std::string_view name) {
    const auto* const header = std::ranges::find(words::kHeaders, name);
    if (header == words::kHeaders.end()) return false;
    if (!draft.headerLines) {
        draft.headerLines.emplace();
        for (const std::string_view line : draft.lines) {
            for (const PlacedHeader& placed : PlaceLine(line).headers)
                ++(*draft.headerLines)[static_cast<std::size_t>(placed.header)];
        }
    }
    return (*draft.headerLines)[static_cast<std::size_t>(header - words::kHeaders.begin())] > 0;
}

void TellOfGuess(Draft& draft, std::size_t number, const KeyGuess& guess, bool skipped) {
    const std::string_view line = draft.Line(number);
    const std::string key = std::string(guess.name) + ":";
    const std::string written = Quoted(Part(line, guess.written));
    const char* const so = skipped ? ", so the line is skipped" : "";
    auto& finding =
        draft.findings.Error(number, guess.written, guess.hasColon ? "unknown-key" : "missing-colon",
                             guess.hasColon ? written + " is not a key" + so + DidYouMean(key)
                                            : written + " has no colon" + so + DidYouMean(key));
    finding.fix = Fix{guess.written, key, guess.certain && !IsSet(draft, guess.name)};
}

/// A key that something precedes.
void TellOfPrefix(Draft& draft, std::size_t number, Span prefix, const FoundKey& key) {
    const std::string name = Quoted(std::string(key.name) + ":");
    const std::string_view text = draft.Text(number, prefix);
    const bool isBlock = std::ranges::find(words::kBlocks, key.name) != words::kBlocks.end();
    std::string message =
        text.starts_with("\xEF\xBB\xBF")
            ? "an invisible byte order mark is in front of " + name
            : Quoted(Part(text, Trimmed(text, {0, text.size()}))) + " is in front of " + name;
    if (isBlock) message += ", so the line is cut at the wrong place and counts for variant 0";
    auto& finding =
        draft.findings.Error(number, prefix, "text-before-key", message + "; begin the line with its key");
    finding.fix = Fix{prefix, "", text == "\xEF\xBB\xBF"};
}

void TellOfNoKey(Draft& draft, std::size_t number, Span clean) {
    const std::string_view line = draft.Line(number);
    const std::string narrowed = Narrowed(Part(line, clean));
    std::string message = "no key begins this line, so it is skipped";
    if (narrowed.starts_with('#')) {
        message = "a comment begins with the ASCII #; this line is skipped, but its keys would count";
    } else if (narrowed.starts_with("//") || narrowed.starts_with(';') || narrowed.starts_with("--")) {
        message = "a comment begins with #; this line is skipped, but keys in it would count";
        draft.findings.Warn(number, clean, "no-key", message);
        return;
    } else {
        const std::string word = narrowed.substr(0, narrowed.find(' '));
        const auto meant = FindMeant(word, words::kVerbs, {});
        if (meant && meant->certain) message += DidYouMean("intro: 0, " + std::string(meant->word));
    }
    draft.findings.Error(number, clean, "no-key", message);
}

/// A line that doesn't begin with a key. What was meant is taken for it; returns the part of the line whose
/// keys have been told of.
Span CheckStart(Draft& draft, std::size_t number, const PlacedLine& placed,
                const std::vector<FoundKey>& keys) {
    const std::string_view line = draft.Line(number);
    if (const auto guess = GuessKey(line, placed.clean)) {
        TellOfGuess(draft, number, *guess, keys.empty());
        if (guess->plausible)
            TakeLine(draft, number, guess->name, guess->written, {guess->written.end, placed.clean.end});
        return guess->written;
    }
    if (keys.empty()) {
        TellOfNoKey(draft, number, placed.clean);
        return placed.clean;
    }
    const FoundKey& key = *std::ranges::min_element(keys, {}, [](const FoundKey& k) { return k.span.begin; });
    TellOfPrefix(draft, number, {placed.clean.begin, key.span.begin}, key);
    TakeLine(draft, number, key.name, key.span, {key.span.end, placed.clean.end});
    return {placed.clean.begin, key.span.end};
}

void CheckLine(Draft& draft, std::size_t number) {
    const PlacedLine placed = PlaceLine(draft.Line(number));
    CheckComment(draft, number, placed);
    if (placed.clean.begin == placed.clean.end) return;
    const auto keys = KeysOf(placed);
    const auto first =
        std::ranges::find_if(keys, [&](const FoundKey& key) { return key.span.begin == placed.clean.begin; });
    Span known{placed.clean.begin, placed.clean.begin};
    if (first == keys.end()) {
        known = CheckStart(draft, number, placed, keys);
    } else {
        known = first->span;
        TakeLine(draft, number, first->name, first->span, {first->span.end, placed.clean.end});
    }
    for (const FoundKey& key : keys) {
        if (key.span.begin >= known.end) TellOfKeyInText(draft, number, placed, key);
    }
}

}  // namespace

void CheckKeys(Draft& draft) {
    for (std::size_t number = 1; number <= draft.lines.size() && !draft.findings.IsFull(); ++number)
        CheckLine(draft, number);
}

}  // namespace sorakaze::check
