// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the header lines say: when the show ends, and who speaks.
#include <algorithm>

#include "base/Ascii.h"
#include "program/check/Draft.h"
#include "program/check/Slips.h"

namespace sorakaze::check {
namespace {

constexpr const char* kModes = "songs 5, minites 30 or all";

void CheckModeNumber(Draft& draft, const HeaderLine& line, const std::string& mode) {
    const std::string word = NthField(mode, " ", 1).Bytes();
    if (String(word) == String("all")) return;
    const double number = Val(NthField(mode, " ", 2));
    if (number > 0) return;
    const std::string narrowed = Narrowed(NthField(mode, " ", 2).Bytes());
    std::string message = "no number above 0 follows " + Quoted(word) +
                          " after one blank, so the show ends before its first track";
    if (Val(narrowed) > 0)
        message = "full-width digits aren't read and count as 0, so the show ends before its first track";
    auto& finding = draft.findings.Error(line.line, line.value, "bad-mode", message);
    // Two blanks make the number the third word.
    const std::string number3 = Trim(Narrowed(mode.substr(word.size()))).Bytes();
    if (Val(number3) <= 0) return;
    finding.message += DidYouMean(word + " " + number3);
    finding.fix = Fix{line.value, word + " " + number3, true};
}

void CheckMode(Draft& draft) {
    const auto& line = draft.Header(words::Header::Mode);
    if (!line) {
        draft.findings.Warn(1, {}, "no-end",
                            std::string("no line says when the show ends (mode: ") + kModes +
                                "): it goes on until it is stopped, or ends as the show before did");
        return;
    }
    const std::string& mode = line->text;
    const std::string word = NthField(mode, " ", 1).Bytes();
    const bool known =
        std::ranges::any_of(words::kModes, [&](auto each) { return String(word) == String(each); });
    if (known) return CheckModeNumber(draft, *line, mode);
    const std::string narrowed = Narrowed(word);
    const std::string first(
        ascii::Trimmed(narrowed.substr(0, narrowed.find_first_of(" 0123456789:=")), ",.;"));
    const auto meant = FindMeant(first, words::kModes, words::kOtherModes);
    const std::string number =
        Trim(Narrowed(mode).substr(std::min(first.size(), Narrowed(mode).size()))).Bytes();
    std::string message = word.empty() ? "the mode is empty, so the show doesn't end by itself"
                                       : Quoted(word) + " is not a mode, so the show doesn't end by itself";
    if (!meant) {
        draft.findings.Error(line->line, word.empty() ? line->key : line->value, "bad-mode",
                             message + "; it is one of " + kModes);
        return;
    }
    std::string better(meant->word);
    const auto digit = number.find_first_of("0123456789");
    if (meant->word != "all" && digit != std::string::npos) better += " " + number.substr(digit);
    const Span span{line->value.begin, line->value.begin + word.size()};
    auto& finding = draft.findings.Error(line->line, span, "bad-mode", message + DidYouMean(better));
    finding.fix = Fix{line->value, better, false};
}

/// The words of the announcer, the first of which is the voice.
void CheckPersonality(Draft& draft) {
    const auto& line = draft.Header(words::Header::Personality);
    if (!line || line->text.empty() || !draft.Has(Command::Kind::Say)) return;
    const auto& japanese = draft.Header(words::Header::JPersonality);
    if (japanese && japanese->line > line->line) return;  // the later line counts
    const std::string& text = line->text;
    const std::size_t blank = text.find(' ');
    if (blank == std::string::npos) {
        const std::string narrowed = Narrowed(text);
        const auto wide = narrowed.find(' ');
        const std::string word = narrowed.substr(0, wide);
        if (String(word) == "Alex" || !(wide != std::string::npos || draft.surroundings.IsVoice(word)))
            return;
        auto& finding = draft.findings.Warn(
            line->line, line->value, "one-word-voice",
            wide == std::string::npos ? "a single word doesn't choose a voice, so Alex speaks; to have " +
                                            word + " speak write two words, such as " + Quoted(word + " Reed")
                                      : "only an ASCII blank ends the voice's name, so Alex speaks");
        if (wide != std::string::npos) finding.fix = Fix{line->value, narrowed, true};
        return;
    }
    const Span word{line->value.begin, line->value.begin + blank};
    const auto complaint = draft.surroundings.CheckVoice(text.substr(0, blank));
    if (!complaint) return;
    auto& finding = draft.findings.Add(
        complaint->severity, line->line, word, complaint->code,
        complaint->message + (complaint->better.empty() ? "" : DidYouMean(complaint->better)));
    if (!complaint->better.empty()) finding.fix = Fix{word, complaint->better, false};
}

void CheckSpeaker(Draft& draft) {
    const auto& line = draft.Header(words::Header::JPersonality);
    if (!draft.Has(Command::Kind::Sayj)) return;
    if (!line) {
        const auto sayj = std::ranges::find(draft.commands, Command::Kind::Sayj, &Command::kind);
        draft.findings.Warn(sayj->line, sayj->text, "no-speaker",
                            "no j_personality line names a speaker, so titles are given in Latin letters");
        return;
    }
    const auto complaint = draft.surroundings.CheckSpeaker(line->text);
    if (!complaint) return;
    auto& finding = draft.findings.Add(
        complaint->severity, line->line, line->value, complaint->code,
        complaint->message + (complaint->better.empty() ? "" : DidYouMean(complaint->better)));
    if (!complaint->better.empty()) finding.fix = Fix{line->value, complaint->better, false};
}

/// Texts of the header that say lines speak.
void CheckSpokenValues(Draft& draft) {
    for (std::size_t i = 0; i <= static_cast<std::size_t>(words::Header::Personality); ++i) {
        const auto& line = draft.headers[i];
        if (!line) continue;
        const std::string placeholder = "[[" + std::string(words::kHeaders[i]) + "]]";
        const bool spoken = std::ranges::any_of(draft.commands, [&](const Command& command) {
            return command.kind == Command::Kind::Say &&
                   InStr(String(draft.Text(command.line, command.text)), placeholder) > 0;
        });
        if (spoken) CheckShell(draft, line->line, line->value);
    }
}

}  // namespace

void CheckHeaders(Draft& draft) {
    for (std::size_t i = 0; i < words::kHeaders.size(); ++i) {
        const auto& line = draft.headers[i];
        if (!line || !line->text.empty() || static_cast<words::Header>(i) == words::Header::Mode) continue;
        draft.findings.Warn(line->line, line->key, "empty-value",
                            std::string(words::kHeaders[i]) + " is empty");
    }
    CheckMode(draft);
    CheckPersonality(draft);
    CheckSpeaker(draft);
    CheckSpokenValues(draft);
}

}  // namespace sorakaze::check
