// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The verb of each command, and its argument.
#include <algorithm>

#include "base/Ascii.h"
#include "base/NearestWord.h"
#include "base/Utf8.h"
#include "program/check/Draft.h"
#include "program/check/Slips.h"

namespace sorakaze::check {
namespace {

using Kind = Command::Kind;

/// Minutes of nothing are hardly meant.
constexpr double kLongWait = 300;
constexpr const char* kSkipped = ", so the line is skipped";

Kind KindOf(std::string_view verb) {
    if (verb == "say") return Kind::Say;
    if (verb == "sayj") return Kind::Sayj;
    return verb == "wait" ? Kind::Wait : Kind::PlayFile;
}

std::optional<std::string_view> FindVerb(const std::string& word) {
    for (const std::string_view verb : words::kVerbs) {
        if (String(word) == String(verb)) return verb;
    }
    return {};
}

Span FirstWord(std::string_view line, Span text) {
    const auto end = Part(line, text).find_first_of(" \t");
    return {text.begin, end == std::string_view::npos ? text.end : text.begin + end};
}

/// A verb that a sign or a wide blank separates from its argument in place of a blank.
struct GluedVerb {
    std::string_view verb;
    Span written;
    bool certain;
};

std::optional<GluedVerb> FindGluedVerb(std::string_view line, Span word) {
    const std::string_view text = Part(line, word);
    std::size_t letters = 0;
    while (letters < text.size() && ascii::IsLetter(text[letters])) ++letters;
    if (letters == text.size()) return {};
    const std::string rest = Narrowed(text.substr(letters));
    auto verb = FindVerb(std::string(text.substr(0, letters)));
    if (!verb && rest.front() == ' ') {
        const auto meant = FindMeant(text.substr(0, letters), words::kVerbs, {});
        if (meant && meant->certain) verb = meant->word;
    }
    if (!verb) return {};
    // The blank, or a sign that nobody would speak, is replaced.
    std::size_t end = word.begin + letters;
    const bool blank = rest.front() == ' ';
    if (blank || rest.front() == ':' || rest.front() == ',' || rest.front() == '=') {
        const auto size = utf8::Read(line, end).size;
        end += size;
    }
    return GluedVerb{*verb, {word.begin, end}, blank};
}

std::string Track() {
    return "[[" + std::string(words::kTrack) + "]]";
}

/// What stands for the next track, or is near it.
bool IsLikeTrack(const std::string& argument) {
    std::string word = ascii::Lowered(Narrowed(argument));
    std::erase_if(
        word, [](char byte) { return std::string_view("[]{}()<> \"").find(byte) != std::string_view::npos; });
    if (argument.find_first_of("[{<") == std::string::npos) return word == "itunes";
    static constexpr std::string_view kOthers[] = {"song", "track",     "music",   "title",
                                                   "next", "nexttrack", "nextsong"};
    return word.starts_with("itunes") || CountSlips(word, "itunes") <= 2 ||
           std::ranges::find(kOthers, word) != std::end(kOthers);
}

void TellOfNoVerb(Draft& draft, const Command& command, Span word) {
    const std::string written = Stored(draft.Line(command.line), word);
    std::string message = Quoted(written) + " is not a verb" + kSkipped;
    std::string hint = "; a command begins with say, sayj, play or wait";
    if (written.starts_with("[[") && IsLikeTrack(written))
        hint = DidYouMean("play " + Track());
    else if (written.starts_with("[[") || word.end != command.text.end)
        hint = DidYouMean("say " + written + " ...");
    draft.findings.Error(command.line, word, "unknown-verb", message + hint);
}

/// The verb that is meant, told of if it isn't what is written; the argument begins after it.
std::optional<std::string_view> MeantVerb(Draft& draft, Command& command, Span word) {
    const std::string_view line = draft.Line(command.line);
    const std::string written = Narrowed(ReplaceAll(Stored(line, word), Chr(34), "").Bytes());
    std::optional<Meant> meant;
    Span place = word;
    std::string text;
    if (const auto glued = FindGluedVerb(line, word)) {
        meant = Meant{glued->verb, glued->certain};
        place = glued->written;
        text = " ";
    } else {
        meant = FindMeant(std::string(ascii::Trimmed(written, ":,.;=")), words::kVerbs, words::kOtherVerbs);
    }
    if (!meant) {
        TellOfNoVerb(draft, command, word);
        return {};
    }
    command.argument.begin = place.end;
    std::string message = Quoted(Stored(line, word)) + " is not a verb" + kSkipped + DidYouMean(meant->word);
    if (!text.empty() && meant->certain) {
        message = "the blank after " + Quoted(meant->word) + " isn't the ASCII one" + kSkipped;
    } else if (!text.empty()) {
        message = "a blank must follow " + Quoted(meant->word) + kSkipped;
    }
    auto& finding = draft.findings.Error(command.line, place, "unknown-verb", message);
    finding.fix = Fix{place, std::string(meant->word) + text, meant->certain};
    return meant->word;
}

void CheckWait(Draft& draft, Command& command) {
    const std::string written = Expanded(draft, draft.Text(command.line, command.argument));
    if (written.find("[[") != std::string::npos) return;
    const std::string narrowed = Narrowed(written);
    command.seconds = std::max(Val(narrowed), 0.0);
    const auto complain = [&](const std::string& message, const std::string& better = "") {
        auto& finding = draft.findings.Error(command.line, command.argument, "bad-wait",
                                             message + (better.empty() ? "" : DidYouMean(better)));
        if (!better.empty()) finding.fix = Fix{command.argument, better, false};
    };
    const std::size_t after = narrowed.find_first_not_of("0123456789+");
    const auto isSign = [&](char sign) {
        return after != std::string::npos && after > 0 && narrowed[after] == sign &&
               after + 1 < narrowed.size() && ascii::IsDigit(narrowed[after + 1]);
    };
    if (written.empty()) {
        complain("how many seconds to wait is missing");
    } else if (Val(written) != Val(narrowed)) {
        complain("full-width digits aren't read and count as 0", narrowed);
    } else if (isSign(':')) {
        command.seconds = Val(narrowed.substr(0, after)) * 60 + Val(narrowed.substr(after + 1));
        complain("a wait is counted in seconds: this waits for " + narrowed.substr(0, after),
                 Str(command.seconds).Bytes());
    } else if (isSign(',')) {
        std::string better = narrowed;
        better[after] = '.';
        complain("the decimal point of a number is a point: this waits for " + narrowed.substr(0, after) +
                     " seconds",
                 better);
        command.seconds = Val(better);
    } else if (Val(written) <= 0) {
        complain(Quoted(written) + " is not a number of seconds above 0, so nothing is waited for");
        command.seconds = 1;
    } else if (const auto unit = narrowed.find_first_not_of("0123456789+. ");
               unit != std::string::npos && narrowed[unit] == 'm') {
        complain("a wait is counted in seconds, whatever follows the number");
    } else if (command.seconds > kLongWait) {
        draft.findings.Warn(command.line, command.argument, "long-wait",
                            "this waits for " + std::to_string(static_cast<int>(command.seconds / 60)) +
                                " minutes: a wait is counted in seconds");
    }
}

void TellOfSound(Draft& draft, const Command& command, const std::string& argument) {
    for (const Complaint& complaint : draft.surroundings.CheckSound(argument)) {
        auto& finding = draft.findings.Add(
            complaint.severity, command.line, command.argument, complaint.code,
            complaint.message + (complaint.better.empty() ? "" : DidYouMean(complaint.better)));
        if (!complaint.better.empty()) finding.fix = Fix{command.argument, complaint.better, false};
    }
}

void CheckPlay(Draft& draft, Command& command) {
    const std::string argument = Expanded(draft, draft.Text(command.line, command.argument));
    const std::string track = Track();
    if (String(argument) == String(track)) {
        command.kind = Kind::PlayTrack;
    } else if (IsLikeTrack(argument)) {
        command.kind = Kind::PlayTrack;
        draft.findings
            .Error(command.line, command.argument, "unknown-track",
                   Quoted(argument) + " doesn't start the next track" + DidYouMean("play " + track))
            .fix = Fix{command.argument, track, false};
    } else if (argument.empty()) {
        command.kind = Kind::Unknown;
        draft.findings.Error(command.line, command.text, "no-argument", "what to play is missing");
    } else if (argument.find("[[") == std::string::npos) {
        TellOfSound(draft, command, argument);
    } else {
        CheckPlaceholders(draft, command);
    }
}

void CheckSpoken(Draft& draft, const Command& command) {
    if (Expanded(draft, draft.Text(command.line, command.argument)).empty())
        draft.findings.Error(command.line, command.text, "no-argument", "what to say is missing");
    CheckPlaceholders(draft, command);
    if (command.kind == Kind::Say) CheckShell(draft, command.line, command.argument);
}

void CheckCommand(Draft& draft, Command& command) {
    const std::string_view line = draft.Line(command.line);
    const Span word = FirstWord(line, command.text);
    command.argument = {word.end, command.text.end};
    const std::string written = Expanded(draft, Part(line, word));
    auto verb = FindVerb(NthField(written, " ", 1).Bytes());
    if (verb && written.find(' ') != std::string::npos) {
        command.kind = KindOf(*verb);  // a placeholder supplies it, with the beginning of its argument
        return;
    }
    if (!verb) verb = MeantVerb(draft, command, word);
    command.argument = Trimmed(line, command.argument);
    if (!verb && IsLikeTrack(written)) return;
    if (!verb) return CheckPlaceholders(draft, command);
    command.kind = KindOf(*verb);
    if (command.kind == Kind::Wait) {
        CheckWait(draft, command);
    } else if (command.kind == Kind::PlayFile) {
        CheckPlay(draft, command);
    } else {
        CheckSpoken(draft, command);
    }
}

}  // namespace

void CheckCommands(Draft& draft) {
    for (Command& command : draft.commands) {
        if (!draft.findings.IsFull()) CheckCommand(draft, command);
    }
}

}  // namespace sorakaze::check
