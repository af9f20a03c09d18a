// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// SayKotoeri -o TEXT: prints the reading of a Japanese text in hiragana. The dictionary is the folder
// `ipadic` next to the program, or else the machine's. Exit status 0; 1 if there is none, and then the text
// is printed with its kana as hiragana, because callers use whatever is printed; 2 for a wrong call. Errors
// are one line on standard error.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <span>
#include <string>
#include <string_view>

#include "speech/kotoeri/Hiragana.h"

namespace {

void Complain(const char* message) {
    std::fprintf(stderr, "SayKotoeri: %s\n", message);
}

bool Print(const std::string& reading) {
    const std::string line = reading + '\n';
    const bool isWritten =
        std::fwrite(line.data(), 1, line.size(), stdout) == line.size() && std::fflush(stdout) == 0;
    if (!isWritten) Complain("can't write the reading");
    return isWritten;
}

}  // namespace

// The arguments are recognised by their positions alone: a text may begin with a hyphen.
int main(int argc, char** argv) {
    // The dictionary's library takes settings from there.
    clearenv();
    const std::span<char*> words(argv, static_cast<std::size_t>(std::max(argc, 0)));
    if (words.size() != 3 || words[1] != std::string_view("-o")) {
        Complain("the call is: SayKotoeri -o TEXT");
        return 2;
    }
    try {
        return Print(sorakaze::kotoeri::InHiragana(sorakaze::japanese::OpenReader(Complain), words[2])) ? 0
                                                                                                        : 1;
    } catch (const std::exception& problem) {
        Complain(problem.what());
        Print(sorakaze::kotoeri::InHiraganaWithoutDictionary(words[2]));
    }
    return 1;
}
