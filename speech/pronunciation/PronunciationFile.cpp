// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/pronunciation/PronunciationFile.h"

#include <algorithm>

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "speech/pronunciation/SpelledText.h"

namespace sorakaze::speech {
namespace {

constexpr std::size_t kMostFaults = 1000;
constexpr std::size_t kLongestName = 100, kLongestSpelling = 200;  // characters
constexpr std::string_view kBlanks = " \t\r";

bool IsLanguage(std::string_view code) {
    const auto isPart = [](char c) { return ascii::IsLetter(c) || ascii::IsDigit(c) || c == '-'; };
    return code.size() >= 2 && code.size() <= 16 && ascii::IsLetter(code[0]) && ascii::IsLetter(code[1]) &&
           std::all_of(code.begin(), code.end(), isPart);
}

bool HasControl(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        if (utf8::IsControl(code)) return true;
        at += size;
    }
    return false;
}

/// Up to a "#" that stands apart.
std::string_view WithoutComment(std::string_view spelling) {
    for (std::size_t at = 1; at < spelling.size(); ++at) {
        const bool endsThere = at + 1 == spelling.size() || kBlanks.find(spelling[at + 1]) != kBlanks.npos;
        if (spelling[at] == '#' && kBlanks.find(spelling[at - 1]) != kBlanks.npos && endsThere)
            return ascii::Trimmed(spelling.substr(0, at), kBlanks);
    }
    return spelling;
}

class Parser {
  public:
    void Take(std::string_view line) {
        ++number_;
        line = ascii::Trimmed(line, kBlanks);
        if (line.empty() || line[0] == '#') return;
        if (!utf8::IsWellFormed(line)) return Complain("the line isn't UTF-8");
        if (HasControl(line)) return Complain("the line holds control characters");
        if (line[0] == '[' && line.find('=') == line.npos) return TakeSection(line);
        TakeEntry(line);
    }
    void Complain(std::string what) {
        if (file_.faults.size() < kMostFaults) file_.faults.push_back({number_, std::move(what)});
    }
    bool IsFull() const { return file_.entries.size() >= kMostPronunciations; }
    PronunciationFile Finish() { return std::move(file_); }

  private:
    void TakeSection(std::string_view line) {
        const std::string code =
            ascii::Lowered(line.ends_with(']') ? line.substr(1, line.size() - 2) : std::string_view());
        isSkipped_ = code != "all" && !IsLanguage(code);
        if (isSkipped_) return Complain("a section is a language such as [de], or [all]");
        language_ = code == "all" ? "" : code;
    }

    void TakeEntry(std::string_view line) {
        if (isSkipped_) return;
        const bool isQuoted = line[0] == '"';
        std::size_t sign = line.npos;
        std::string_view name;
        if (isQuoted) {
            const auto end = line.find('"', 1);
            if (end == line.npos) return Complain("the name's second quote is missing");
            name = line.substr(1, end - 1);
            sign = line.find_first_not_of(kBlanks, end + 1);
            if (sign == line.npos || line[sign] != '=') return Complain("there is no \"=\" after the name");
        } else {
            sign = line.find(" = ");
            sign = sign == line.npos ? line.find('=') : sign + 1;
            if (sign == line.npos) return Complain("there is no \"=\"");
            name = ascii::Trimmed(line.substr(0, sign), kBlanks);
        }
        const std::string_view spelling = WithoutComment(ascii::Trimmed(line.substr(sign + 1), kBlanks));
        if (const std::string fault = FaultOf(name, spelling); !fault.empty()) return Complain(fault);
        file_.entries.push_back({std::string(name), std::string(spelling), language_});
    }

    static std::string FaultOf(std::string_view name, std::string_view spelling) {
        if (SpelledText(name).characters.empty()) return "there is no name before \"=\"";
        if (spelling.empty()) return "there is no spelling after \"=\"";
        if (utf8::CountCharacters(name) > kLongestName) return "the name is too long";
        if (utf8::CountCharacters(spelling) > kLongestSpelling) return "the spelling is too long";
        if (spelling.find_first_of("$`\\\"[]<>") != spelling.npos)
            return "a spelling can't hold any of $ ` \\ \" [ ] < >";
        return {};
    }

    PronunciationFile file_;
    std::size_t number_ = 0;
    std::string language_;
    bool isSkipped_ = false;  ///< the section is for no language
};

}  // namespace

PronunciationFile ParsePronunciations(std::string_view bytes) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    Parser parser;
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        parser.Complain("the file is UTF-16; save it as UTF-8");
        return parser.Finish();
    }
    const bool isTooLarge = bytes.size() > kLargestPronunciationFile;
    if (isTooLarge) bytes = bytes.substr(0, bytes.rfind('\n', kLargestPronunciationFile) + 1);
    if (bytes.starts_with(kMark)) bytes.remove_prefix(kMark.size());
    while (!bytes.empty() && !parser.IsFull()) {
        const auto end = std::min(bytes.find('\n'), bytes.size());
        parser.Take(bytes.substr(0, end));
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
    PronunciationFile file = parser.Finish();
    if (isTooLarge || !bytes.empty())
        file.faults.insert(file.faults.begin(),
                           {0, "the file is too long, only its first " + std::to_string(file.entries.size()) +
                                   " pronunciations are used"});
    return file;
}

}  // namespace sorakaze::speech
