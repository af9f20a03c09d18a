// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// SayKotoeri -o TEXT: prints the reading of a Japanese text in hiragana. The dictionary is the folder
// `ipadic` beside the program, or else the machine's. Exit status 0; 1 when there is none, and then the text
// is printed with its kana as hiragana, because whoever calls takes what is printed; 2 for a wrong call.
// Errors are one line on standard error.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "speech/kotoeri/Reader.h"

namespace {

namespace fs = std::filesystem;
using sorakaze::kotoeri::NoDictionary;
using sorakaze::kotoeri::Reader;

Reader OpenReader(const fs::path& program) {
    const fs::path beside = program.parent_path() / "ipadic";
    std::error_code error;
    if (program.has_parent_path() && fs::exists(beside, error)) {
        try {
            return Reader(beside);
        } catch (const NoDictionary& problem) {
            std::fprintf(stderr, "SayKotoeri: %s\n", problem.what());
        }
    }
    return Reader();
}

bool Print(const std::string& reading) {
    const std::string line = reading + '\n';
    const bool isWritten =
        std::fwrite(line.data(), 1, line.size(), stdout) == line.size() && std::fflush(stdout) == 0;
    if (!isWritten) std::fputs("SayKotoeri: can't write the reading\n", stderr);
    return isWritten;
}

}  // namespace

// The words are told apart by their places alone: a text may begin with a hyphen.
int main(int argc, char** argv) {
    // The dictionary's library takes settings from there.
    clearenv();
    const std::span<char*> words(argv, static_cast<std::size_t>(std::max(argc, 0)));
    if (words.size() != 3 || words[1] != std::string_view("-o")) {
        std::fputs("SayKotoeri: the call is: SayKotoeri -o TEXT\n", stderr);
        return 2;
    }
    try {
        return Print(OpenReader(words[0]).Read(words[2])) ? 0 : 1;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "SayKotoeri: %s\n", problem.what());
        Print(sorakaze::kotoeri::ReadWithoutDictionary(words[2]));
    }
    return 1;
}
