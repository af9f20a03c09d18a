// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// say -v VOICE TEXT -o FILE: speaks a text into an AIFF file. Exit status 0 when the file is complete, 1 when
// it could not be made (then nothing is left in its folder), 2 for a wrong call. Errors are one line on
// standard error.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>

#include "speech/say/AiffFile.h"
#include "speech/say/Engine.h"
#include "speech/say/Leveller.h"
#include "speech/say/SpokenText.h"

namespace {

using namespace sorakaze::speech;

void SayTo(const std::string& voice, std::string_view text, const char* file) {
    Engine engine;
    engine.Choose(voice);
    AiffFile aiff(file, engine.SampleRate());
    Leveller leveller(engine.SampleRate(),
                      [&](std::span<const std::int16_t> samples) { aiff.Write(samples); });
    const std::string spoken = SpokenText(text);
    if (spoken.find_first_not_of(' ') != std::string::npos) {
        engine.Speak(spoken, [&](std::span<const std::int16_t> samples) { leveller.Write(samples); });
    }
    leveller.Finish();
    aiff.Finish();
}

void Complain(std::string_view message) {
    std::fprintf(stderr, "say: %s\n", SpokenText(message).c_str());
}

}  // namespace

// The words are told apart by their places alone: a text may begin with a hyphen.
int main(int argc, char** argv) {
    const std::span<char*> words(argv, static_cast<std::size_t>(std::max(argc, 0)));
    if (words.size() != 6 || words[1] != std::string_view("-v") || words[4] != std::string_view("-o")) {
        Complain("the call is: say -v VOICE TEXT -o FILE");
        return 2;
    }
    try {
        SayTo(words[2], words[3], words[5]);
        return 0;
    } catch (const std::exception& problem) {
        Complain(problem.what());
        return 1;
    }
}
