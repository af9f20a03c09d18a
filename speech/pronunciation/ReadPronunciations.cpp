// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/pronunciation/ReadPronunciations.h"

#include <fcntl.h>

#include <system_error>

#include "base/RegularFile.h"

namespace sorakaze::speech {

PronunciationFile ReadPronunciationFile(const std::filesystem::path& file) {
    std::error_code failure;
    const auto status = std::filesystem::status(file, failure);
    if (status.type() == std::filesystem::file_type::not_found) return {};
    const FileHandle in = OpenRegularFile(file, O_RDONLY | O_CLOEXEC, "r");
    if (!in) return {{}, {{0, "the file can't be read"}}};
    std::string bytes(kLargestPronunciationFile + 1, '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), in.get()));
    if (std::ferror(in.get())) return {{}, {{0, "the file can't be read"}}};
    return ParsePronunciations(bytes);
}

std::string FaultLine(const PronunciationFile& file) {
    if (file.faults.empty()) return {};
    const PronunciationFault& first = file.faults.front();
    std::string line = "Pronunciations.txt: ";
    if (first.line > 0) line += "line " + std::to_string(first.line) + ": ";
    line += first.what;
    if (file.faults.size() > 1) line += " (" + std::to_string(file.faults.size() - 1) + " more)";
    return line;
}

}  // namespace sorakaze::speech
