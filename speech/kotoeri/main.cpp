// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// SayKotoeri -o TEXT: prints the reading of a Japanese text in hiragana. Exit status 0, 1 when there is no
// dictionary, 2 for a wrong call. Errors are one line on standard error.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>

#include "speech/kotoeri/Reader.h"

// The words are told apart by their places alone: a text may begin with a hyphen.
int main(int argc, char** argv) {
    const std::span<char*> words(argv, static_cast<std::size_t>(std::max(argc, 0)));
    if (words.size() != 3 || words[1] != std::string_view("-o")) {
        std::fputs("SayKotoeri: the call is: SayKotoeri -o TEXT\n", stderr);
        return 2;
    }
    try {
        const std::string line = sorakaze::kotoeri::Reader().Read(words[2]) + '\n';
        if (std::fwrite(line.data(), 1, line.size(), stdout) == line.size() && std::fflush(stdout) == 0)
            return 0;
        std::fputs("SayKotoeri: can't write the reading\n", stderr);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "SayKotoeri: %s\n", problem.what());
    }
    return 1;
}
