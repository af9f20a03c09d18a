// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The number of a variant, its comma, and whether a command follows.
#include <algorithm>

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"
#include "program/check/Draft.h"
#include "program/check/Slips.h"

namespace sorakaze::check {
namespace {

/// The digits at the start of a line's part, and what separates them from a command.
struct NumberText {
    Span digits;  ///< in ASCII or full-width
    Span separator;
    Span command;
    bool wide = false;
    bool negative = false;
};

NumberText ReadNumberText(std::string_view line, Span rest) {
    rest = Trimmed(line, rest);
    NumberText text;
    std::size_t at = rest.begin;
    const auto peek = [&](std::size_t where) {
        return where < rest.end ? utf8::Read(line, where) : utf8::Character{0, 0};
    };
    if (peek(at).code == '-' || peek(at).code == '+') text.negative = line[at++] == '-';
    text.digits.begin = rest.begin;
    for (auto next = peek(at); Narrowed(next.code) >= '0' && Narrowed(next.code) <= '9'; next = peek(at)) {
        text.wide = text.wide || next.code >= 0x80;
        at += next.size;
    }
    text.digits.end = at;
    while (unicode::IsWhiteSpace(peek(at).code)) at += peek(at).size;
    text.separator = {at, at};
    // The ideographic commas too.
    static constexpr std::u32string_view kSeparators = U",.;:=)-、，､。";
    for (auto next = peek(at);
         next.size > 0 && kSeparators.find(Narrowed(next.code)) != std::u32string_view::npos;
         next = peek(at)) {
        at += next.size;
        text.separator.end = at;
    }
    text.command = Trimmed(line, {at, rest.end});
    return text;
}

bool BeginsWithVerb(std::string_view text) {
    const std::string word = ascii::Lowered(text.substr(0, text.find_first_of(" \t")));
    return std::ranges::find(words::kVerbs, word) != words::kVerbs.end();
}

/// So much that the place is known by it.
std::string Beginning(const std::string& text) {
    constexpr std::size_t kMost = 24;  // characters
    std::size_t at = 0;
    for (std::size_t i = 0; i < kMost && at < text.size(); ++i) at += utf8::Read(text, at).size;
    return at < text.size() ? text.substr(0, at) + " ..." : text;
}

void Keep(Draft& draft, std::size_t line, BlockName block, int variant, Span number, Span text) {
    if (text.begin == text.end) {
        draft.findings.Error(line, number, "empty-command", "no command follows the variant's number");
        draft.IsUncertain(block) = true;
        return;
    }
    auto& count = draft.lineCounts[static_cast<std::size_t>(block)][static_cast<std::size_t>(variant)];
    if (++count > words::kMostLines) {
        draft.findings.Error(line, number, "too-many-lines",
                             "variant " + std::to_string(variant) + " of " + std::string(NameOf(block)) +
                                 " has ten lines already, so this one is dropped");
    }
    draft.commands.push_back({line, block, variant, number, text});
}

void TellOfRange(Draft& draft, std::size_t line, BlockName block, Span number) {
    draft.findings.Error(
        line, number, "variant-out-of-range",
        "a variant's number goes from 0 to 10; the program is read up to here and no show starts");
    draft.IsUncertain(block) = true;
}

/// The digits are there, but not the comma.
void TellOfComma(Draft& draft, std::size_t line, const NumberText& text) {
    const std::string_view wrong = draft.Text(line, text.separator);
    std::string message = "a comma is missing after the variant's number";
    if (!wrong.empty()) message = Quoted(wrong) + " is not a comma";
    auto& finding = draft.findings.Error(
        line, wrong.empty() ? Span{text.digits.end, text.digits.end + 1} : text.separator, "missing-comma",
        message + DidYouMean(Narrowed(draft.Text(line, text.digits)) + ", " +
                             Beginning(Stored(draft.Line(line), text.command))));
    finding.fix = Fix{{text.digits.end, text.command.begin}, ", ", false};
}

void TellOfMissingNumber(Draft& draft, std::size_t line, BlockName block, const CommandPlace& place,
                         Span rest) {
    std::string message = "the variant's number is missing: " + std::string(NameOf(block)) + ": 0, ...";
    const bool cut = place.comma && place.number.begin != place.number.end;
    if (cut) message += "; what stands before the comma is taken for it and not run";
    auto& finding = draft.findings.Error(line, rest, "missing-number", message);
    finding.fix = Fix{{rest.begin, rest.begin}, cut || !place.comma ? "0, " : "0", false};
}

}  // namespace

void CheckNumber(Draft& draft, std::size_t line, BlockName block, Span rest) {
    const std::string_view text = draft.Line(line);
    const CommandPlace place = PlaceCommand(text, rest);
    const NumberText number = ReadNumberText(text, rest);
    const std::string_view digits = draft.Text(line, number.digits);
    const int variant = VariantOf(Narrowed(digits));
    const bool hasDigits = Narrowed(digits).find_first_of("0123456789") != std::string::npos;
    if (hasDigits && place.number == number.digits && place.comma) {
        if (number.wide) {
            draft.findings
                .Error(line, number.digits, "bad-number",
                       "full-width digits aren't read and count as 0" + DidYouMean(Narrowed(digits)))
                .fix = Fix{number.digits, Narrowed(digits), true};
        }
        if (number.negative || variant < 0 || variant > words::kHighestVariant)
            return TellOfRange(draft, line, block, number.digits);
        return Keep(draft, line, block, variant, number.digits, place.text);
    }
    const Span whole = Trimmed(text, rest);
    if (whole.begin == whole.end) {
        draft.findings.Error(line, {rest.begin - 1, rest.begin}, "empty-command",
                             "no variant and no command follow the key");
        draft.IsUncertain(block) = true;
    } else if (place.comma && BeginsWithVerb(draft.Text(line, place.text)) &&
               place.number.begin != place.number.end) {
        const std::int32_t taken = VariantOf(draft.Text(line, place.number));
        draft.findings.Error(line, place.number, "bad-number",
                             Quoted(draft.Text(line, place.number)) +
                                 " is not a number from 0 to 10 and counts as " + std::to_string(taken));
        draft.IsUncertain(block) = true;
        Keep(draft, line, block, std::clamp(taken, 0, words::kHighestVariant), place.number, place.text);
    } else if (hasDigits) {
        if (number.command.begin == number.command.end)
            return Keep(draft, line, block, variant, number.digits, number.command);
        TellOfComma(draft, line, number);
        if (number.negative || variant > words::kHighestVariant)
            return TellOfRange(draft, line, block, number.digits);
        Keep(draft, line, block, variant, number.digits, number.command);
    } else {
        TellOfMissingNumber(draft, line, block, place, whole);
        draft.IsUncertain(block) = true;
        const bool startsWithComma = place.comma && place.number.begin == place.number.end;
        Keep(draft, line, block, 0, {whole.begin, whole.begin + 1}, startsWithComma ? place.text : whole);
    }
}

}  // namespace sorakaze::check
