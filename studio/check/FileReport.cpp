// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/FileReport.h"

#include <algorithm>

#include "base/PrintableText.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze::studio {
namespace {

using check::Finding;
using check::Severity;

constexpr std::size_t kTabStop = 8;
/// Terminal columns of a source line that are shown; of a longer one the part around the place.
constexpr std::size_t kWidest = 150;
constexpr std::size_t kBeforePlace = 60;

struct Paint {
    const char* bold = "";
    const char* error = "";
    const char* warning = "";
    const char* caret = "";
    const char* plain = "";
};

Paint PaintOf(Colours colours) {
    if (colours == Colours::Off) return {};
    return {"\033[1m", "\033[1;31m", "\033[1;35m", "\033[1;32m", "\033[0m"};
}

/// A part of a line as a terminal shows it.
struct Shown {
    std::string text;
    std::size_t columns = 0;
};

void Append(Shown& shown, std::string_view line, std::size_t at, utf8::Character character) {
    if (character.code == '\t') {
        const std::size_t blanks = kTabStop - shown.columns % kTabStop;
        shown.text.append(blanks, ' ');
        shown.columns += blanks;
        return;
    }
    const std::string printable = Printable(std::string(line.substr(at, character.size)));
    shown.text += printable;
    shown.columns +=
        printable.empty() ? 0 : static_cast<std::size_t>(unicode::ColumnsOf(utf8::Read(printable, 0).code));
}

struct Excerpt {
    std::string text;
    std::size_t caret = 0;  ///< columns before it
    std::size_t width = 1;  ///< of what is marked
};

Excerpt MakeExcerpt(std::string_view line, check::Span span) {
    Shown shown;
    std::size_t begin = 0;
    // What is far before the place is left out.
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at < std::min(span.begin, line.size()); at += utf8::Read(line, at).size)
        starts.push_back(at);
    if (starts.size() > kBeforePlace) {
        begin = starts[starts.size() - kBeforePlace];
        shown = {"…", 1};
    }
    Excerpt excerpt;
    std::size_t end = 0;
    for (std::size_t at = begin; at <= line.size();) {
        if (at == span.begin) excerpt.caret = shown.columns;
        if (at <= span.end) end = shown.columns;
        if (at == line.size()) break;
        if (shown.columns >= kWidest) {
            shown.text += "…";
            break;
        }
        const auto character = utf8::Read(line, at);
        Append(shown, line, at, character);
        at += character.size;
    }
    if (span.begin > line.size()) excerpt.caret = end = shown.columns;
    excerpt.text = std::move(shown.text);
    excerpt.width = std::max<std::size_t>(end - std::min(end, excerpt.caret), 1);
    return excerpt;
}

std::string SourceText(const FileReport& report, const Finding& finding, const Paint& paint) {
    if (finding.line == 0 || finding.line > report.lines.size()) return {};
    const Excerpt excerpt = MakeExcerpt(report.lines[finding.line - 1], finding.span);
    if (excerpt.text.find_first_not_of(' ') == std::string::npos) return {};
    std::string number = std::to_string(finding.line);
    number.insert(0, 5 - std::min<std::size_t>(number.size(), 5), ' ');
    return number + " | " + excerpt.text + "\n" + std::string(number.size(), ' ') + " | " +
           std::string(excerpt.caret, ' ') + paint.caret + "^" + std::string(excerpt.width - 1, '~') +
           paint.plain + "\n";
}

std::string PlaceText(const FileReport& report, const Finding& finding) {
    // Of the file as a whole the beginning is named, for editors that want a place.
    const std::size_t line = std::max<std::size_t>(finding.line, 1);
    const bool known = finding.line > 0 && line <= report.lines.size();
    const std::size_t column = known ? ColumnOf(report.lines[line - 1], finding.span.begin) : 1;
    return ":" + std::to_string(line) + ":" + std::to_string(column) + ":";
}

}  // namespace

std::size_t ColumnOf(std::string_view line, std::size_t offset) {
    return utf8::CountCharacters(line.substr(0, offset)) + 1;
}

std::size_t FileReport::Count(Severity severity) const {
    return static_cast<std::size_t>(std::ranges::count(findings, severity, &Finding::severity));
}

std::string ReportText(const FileReport& report, Colours colours) {
    const Paint paint = PaintOf(colours);
    std::string text;
    for (const Finding& finding : report.findings) {
        const bool isError = finding.severity == Severity::Error;
        text += paint.bold + Printable(report.name) + PlaceText(report, finding) + paint.plain + " " +
                (isError ? paint.error : paint.warning) + (isError ? "error:" : "warning:") + paint.plain +
                " " + paint.bold + Printable(finding.message) + paint.plain + " [" + finding.code + "]\n" +
                SourceText(report, finding, paint);
    }
    return text;
}

void AppendJson(nlohmann::json& array, const FileReport& report) {
    for (const Finding& finding : report.findings) {
        const bool known = finding.line > 0 && finding.line <= report.lines.size();
        const std::string_view line =
            known ? std::string_view(report.lines[finding.line - 1]) : std::string_view();
        nlohmann::json object{{"file", Printable(report.name)},
                              {"line", std::max<std::size_t>(finding.line, 1)},
                              {"column", ColumnOf(line, finding.span.begin)},
                              {"endColumn", ColumnOf(line, finding.span.end)},
                              {"severity", finding.severity == Severity::Error ? "error" : "warning"},
                              {"code", finding.code},
                              {"message", Printable(finding.message)}};
        if (finding.fix) {
            object["fix"] = {{"column", ColumnOf(line, finding.fix->span.begin)},
                             {"endColumn", ColumnOf(line, finding.fix->span.end)},
                             {"text", Printable(finding.fix->text)}};
        }
        array.push_back(std::move(object));
    }
}

}  // namespace sorakaze::studio
