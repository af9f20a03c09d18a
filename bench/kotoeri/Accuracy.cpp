// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// kotoeri_accuracy [-v] FILE...: how many words of each file's titles are read as a listener would read them.
// With -v the titles that are read wrong are listed.
#include <cstdio>
#include <span>
#include <string_view>

#include "tests/speech/japanese/TitleScore.h"

int main(int argc, char** argv) {
    using namespace sorakaze;
    const japanese::Reader reader{japanese::Dictionary()};
    bool lists = false;
    for (const std::string_view word : std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
        if (word == "-v") {
            lists = true;
            continue;
        }
        test::Score score;
        const auto titles = test::Titles(std::string(word));
        for (const test::Title& title : titles) {
            const std::string wrong = score.Add(title, reader);
            if (lists && !wrong.empty()) std::printf("%s\t%s\n", title.text.c_str(), wrong.c_str());
        }
        std::printf("%.*s: %zu titles, %.1f %% of %d words right, %.1f %% of the right ones split\n",
                    static_cast<int>(word.size()), word.data(), titles.size(), score.Percent(), score.words,
                    100.0 * score.splitWords / score.rightWords);
    }
}
