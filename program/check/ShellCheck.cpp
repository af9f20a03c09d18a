// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a text that `say` speaks loses on its way through the shell, which has it between double quotes.
#include <string>

#include "base/Ascii.h"
#include "program/check/Draft.h"

namespace sorakaze::check {
namespace {

/// Follows the text as the shell does. Double quotes are gone by then.
class ShellReader {
  public:
    ShellReader(Draft& draft, std::size_t line, Span text)
        : draft_(draft), line_(line), end_(text.end), at_(text.begin) {}

    void Read() {
        while (at_ < end_) {
            switch (Peek(0)) {
                case '\\':
                    ReadBackslash();
                    break;
                case '$':
                    ReadDollar();
                    break;
                case '`':
                    ReadBackquote();
                    break;
                default:
                    ++at_;
            }
        }
    }

  private:
    /// 0 beyond the end.
    char Peek(std::size_t ahead) const {
        const std::string_view line = draft_.Line(line_).substr(0, end_);
        std::size_t at = at_;
        for (; at < line.size(); ++at) {
            if (line[at] == '"') continue;
            if (ahead-- == 0) return line[at];
        }
        return 0;
    }

    void Tell(std::size_t end, const std::string& message, Severity severity = Severity::Error) {
        std::string better;
        for (const char byte : draft_.Text(line_, {at_, end})) {
            if (byte == '$' || byte == '`' || byte == '\\') better += '\\';
            better += byte;
        }
        auto& finding = draft_.findings.Add(severity, line_, {at_, end}, "shell",
                                            message + "; to have it spoken write " + Quoted(better));
        finding.fix = Fix{{at_, end}, better, false};
    }

    void ReadBackslash() {
        const char next = Peek(1);
        if (next == '$' || next == '`' || next == '\\') {
            at_ += 2;
            return;
        }
        if (next == 0) {
            Tell(at_ + 1,
                 "a backslash at the end takes the sentence's closing quote away, so nothing is spoken");
        } else {
            draft_.findings.Warn(line_, {at_, at_ + 1}, "shell",
                                 "a backslash is only taken away before $, ` and \\; here it is spoken");
        }
        ++at_;
    }

    void ReadDollar() {
        const char next = Peek(1);
        if (next == '(' || next == '{') {
            const auto close = draft_.Line(line_).substr(0, end_).find(next == '(' ? ')' : '}', at_);
            if (close == std::string_view::npos) {
                Tell(at_ + 2, "the shell misses the end of what begins with " +
                                  Quoted(std::string("$") + next) + ", so nothing is spoken");
                at_ += 2;
                return;
            }
            const std::string_view whole = draft_.Text(line_, {at_, close + 1});
            Tell(close + 1,
                 next == '(' ? "the shell runs " + Quoted(whole) + " as a command and speaks what it prints"
                             : "the shell takes " + Quoted(whole) + " for a variable, which is empty",
                 next == '(' ? Severity::Warning : Severity::Error);
            at_ = close + 1;
            return;
        }
        std::size_t end = at_ + 1;
        if (ascii::IsLetter(next) || next == '_') {
            const std::string_view line = draft_.Line(line_);
            while (end < end_ &&
                   (ascii::IsLetter(line[end]) || ascii::IsDigit(line[end]) || line[end] == '_'))
                ++end;
        } else if (ascii::IsDigit(next) ||
                   (next && std::string_view("@*?$!-").find(next) != std::string_view::npos)) {
            ++end;
        }
        if (end > at_ + 1)
            Tell(end, "the shell takes " + Quoted(draft_.Text(line_, {at_, end})) +
                          " for a variable and leaves it out");
        at_ = end;
    }

    void ReadBackquote() {
        std::size_t close = at_ + 1;
        const std::string_view line = draft_.Line(line_);
        while (close < end_ && line[close] != '`') close += line[close] == '\\' ? 2 : 1;
        if (close >= end_) {
            Tell(at_ + 1, "the shell misses a second backquote, so nothing is spoken");
            at_ = end_;
            return;
        }
        Tell(close + 1, "the shell runs " + Quoted(line.substr(at_, close + 1 - at_)) + " as a command");
        at_ = close + 1;
    }

    Draft& draft_;
    const std::size_t line_;
    const std::size_t end_;
    std::size_t at_;
};

}  // namespace

void CheckShell(Draft& draft, std::size_t line, Span text) {
    ShellReader(draft, line, text).Read();
}

}  // namespace sorakaze::check
