// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/PronunciationCheck.h"

#include "program/check/PlacedLine.h"
#include "speech/pronunciation/ReadPronunciations.h"
#include "studio/check/TextFile.h"

namespace sorakaze::studio {

std::optional<FileReport> CheckPronunciations(const std::filesystem::path& station) {
    constexpr const char* kName = "Pronunciations.txt";
    std::error_code failure;
    if (station.empty() || !std::filesystem::exists(station / kName, failure)) return {};
    const speech::PronunciationFile file = speech::ReadPronunciationFile(station / kName);
    FileReport report{kName, {}, {}};
    const TextFile text = ReadTextFile(station / kName);
    if (text.isText && !text.isConverted) {
        for (const auto line : check::SplitLines(text.text)) report.lines.emplace_back(line);
    }
    for (const auto& [number, what] : file.faults) {
        const bool isShown = number > 0 && number <= report.lines.size();
        const std::size_t end = isShown ? report.lines[number - 1].size() : 0;
        report.findings.push_back({number,
                                   {0, end},
                                   check::Severity::Warning,
                                   "faulty-pronunciation",
                                   number > 0 ? what + ", so it is left out" : what,
                                   {}});
    }
    return report;
}

}  // namespace sorakaze::studio
