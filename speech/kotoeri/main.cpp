// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// SayKotoeri -o TEXT: prints the reading of a text: Japanese in hiragana, other scripts as the voice can read
// them. SORAKAZE_VOICE names the voice, an English one if it isn't set; SORAKAZE_RECORD has the track's
// names, separated by tabs, which tell Chinese from Japanese. The dictionary is the folder `ipadic` next to
// the program, or else the machine's. Exit status 0; 1 if there is none, and then the text is printed with
// its kana as hiragana, because callers use whatever is printed; 2 for a wrong call. Errors are one line on
// standard error.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "process/VoicePlaces.h"
#include "speech/kotoeri/Hiragana.h"
#include "speech/kotoeri/ReadingForVoice.h"
#include "speech/say/folders/VoiceLanguage.h"

namespace {

using namespace sorakaze;
using namespace sorakaze::kotoeri;

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

Surroundings FindSurroundings() {
    Surroundings found;
    if (const char* const voice = std::getenv("SORAKAZE_VOICE"))
        found.language = speech::LanguageOfVoiceNamed(voice, process::VoicePlacesOfCommand());
    if (const char* const record = std::getenv("SORAKAZE_RECORD")) found.record = record;
    return found;
}

std::optional<japanese::Reader> FindReader() {
    try {
        return japanese::OpenReader(Complain);
    } catch (const std::exception& problem) {
        Complain(problem.what());
        return {};
    }
}

}  // namespace

// The arguments are recognised by their positions alone: a text may begin with a hyphen.
int main(int argc, char** argv) {
    const Surroundings surroundings = FindSurroundings();
    // The dictionary's library takes settings from there.
    clearenv();
    const std::span<char*> words(argv, static_cast<std::size_t>(std::max(argc, 0)));
    if (words.size() != 3 || words[1] != std::string_view("-o")) {
        Complain("the call is: SayKotoeri -o TEXT");
        return 2;
    }
    const auto reader = FindReader();
    try {
        const auto reading = ReadingForVoice(words[2], surroundings, [&](std::string_view part) {
            return reader ? InHiragana(*reader, part) : InHiraganaWithoutDictionary(part);
        });
        return Print(reading) && reader ? 0 : 1;
    } catch (const std::exception& problem) {
        Complain(problem.what());
        Print(InHiraganaWithoutDictionary(words[2]));
    }
    return 1;
}
