// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// say -v VOICE TEXT -o FILE [-s SPEED]: speaks a text into an AIFF file, or a WAV file if its name ends so.
// Exit status 0 if the file is complete, 1 if it could not be made (then nothing is left in its folder), 2
// for a wrong call. Errors are one line on standard error. Speech is cut after about two minutes, which a
// line on standard output reports. Japanese is read with the dictionary in the folder `ipadic` next to the
// program, or else with the machine's.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "speech/say/JapaneseText.h"
#include "speech/say/SpokenText.h"
#include "speech/say/voices/BuiltInVoices.h"
#include "speech/say/voices/SpeakFirst.h"

namespace {

using namespace sorakaze::speech;

void Complain(std::string_view message) {
    std::fprintf(stderr, "say: %s\n", SpokenText(message).c_str());
}

void SayTo(const std::string& voice, std::string_view text, const std::filesystem::path& file, double speed) {
    VoiceCatalogue catalogue;
    catalogue.Add(std::make_unique<BuiltInVoices>(std::filesystem::absolute(file).parent_path(), Complain));
    Recorder recorder(file);
    const std::string safe = SpokenText(text);
    const SpeakResult result = SpeakFirst(
        catalogue.Choose(voice), [&](const std::string&) { return OrdinaryForms(safe); }, speed, recorder);
    for (const auto& [candidate, why] : result.passedOver) {
        Complain(why + ", so that " + result.used.engine + " speaks");
    }
    if (!result.cut) return;
    std::puts("say: the text is too long, its speech was cut");
    std::fflush(stdout);
}

std::optional<double> ReadSpeed(std::string_view word) {
    double speed = 0;
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), speed);
    const bool whole = failure == std::errc() && end == word.data() + word.size();
    return whole && speed >= 0.5 && speed <= 2 ? std::optional(speed) : std::nullopt;
}

/// The engines and their libraries read folders and settings from the environment. This program only needs
/// the folder for scratch files.
void ClearEnvironment() {
    const char* value = std::getenv("TMPDIR");
    const std::string scratch = value ? value : "";
    clearenv();
    if (!scratch.empty()) setenv("TMPDIR", scratch.c_str(), 1);
}

}  // namespace

// The arguments are recognised by their positions alone: a text may begin with a hyphen.
int main(int argc, char** argv) {
    ClearEnvironment();
    const std::span<char*> words(argv, static_cast<std::size_t>(std::max(argc, 0)));
    const bool right = (words.size() == 6 || (words.size() == 8 && words[6] == std::string_view("-s"))) &&
                       words[1] == std::string_view("-v") && words[4] == std::string_view("-o");
    const auto speed = right && words.size() == 8 ? ReadSpeed(words[7]) : std::optional(1.0);
    if (!right || !speed) {
        Complain("the call is: say -v VOICE TEXT -o FILE [-s SPEED], the speed from 0.5 to 2");
        return 2;
    }
    try {
        SayTo(words[2], words[3], words[5], *speed);
        return 0;
    } catch (const std::exception& problem) {
        Complain(problem.what());
        return 1;
    }
}
