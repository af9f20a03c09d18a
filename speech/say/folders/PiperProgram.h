// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace sorakaze::speech {

/// How Piper is run.
struct PiperProgram {
    std::vector<std::string> words;    ///< a program, or Python with its module; empty if Piper isn't there
    std::filesystem::path espeakData;  ///< to be named to the program; empty where it needs none named
};

/// Looks for Piper in each of `places` and its subfolders piper, bin, venv/bin and .venv/bin, then in the
/// system's folders for programs, then for its module in the system's Python. Other programs have that name
/// too: what counts is what a file holds, and nothing is run.
PiperProgram FindPiper(const std::vector<std::filesystem::path>& places);

}  // namespace sorakaze::speech
