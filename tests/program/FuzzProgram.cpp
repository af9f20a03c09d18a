// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as the lines of a program file.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "program/ProgramLine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file(reinterpret_cast<const char*>(data), size);
    for (std::size_t begin = 0; begin < file.size();) {
        const std::size_t end = std::min(file.find('\n', begin), file.size());
        sorakaze::ParseProgramLine(file.substr(begin, end - begin));
        begin = end + 1;
    }
    return 0;
}
