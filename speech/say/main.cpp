// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// say --voices: lists the voices, a line each with its name, language, engine, licence, credit and what is
// wrong with it, separated by tabs. say -v VOICE TEXT -o FILE [-s SPEED]: speaks a text into an AIFF file, or
// a WAV file if its name ends so. Exit status 0 if the file is complete, 1 if it could not be made (then
// nothing is left in its folder), 2 for a wrong call. Errors are one line on standard error. Speech is cut
// after about two minutes, which a line on standard output reports. Japanese is read with the dictionary in
// the folder `ipadic` next to the program, or else with the machine's.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ProgramFolder.h"
#include "process/PronunciationPlaces.h"
#include "process/VoicePlaces.h"
#include "speech/pronunciation/ReadPronunciations.h"
#include "speech/say/SpokenText.h"
#include "speech/say/WordsToSpeak.h"
#include "speech/say/folders/FolderVoices.h"
#include "speech/say/folders/VoiceReport.h"
#include "speech/say/voices/BuiltInVoices.h"
#include "speech/say/voices/SpeakFirst.h"

namespace {

using namespace sorakaze::speech;

void Complain(std::string_view message) {
    std::fprintf(stderr, "say: %s\n", SpokenText(message).c_str());
}

/// Time for a voice that may fail; the next one, which is quick, has the rest of what a command gets.
constexpr std::chrono::seconds kTimeForFolders{12};

/// All that can speak.
class Voices {
  public:
    Voices(std::vector<std::filesystem::path> places, const std::filesystem::path& scratch) {
        auto builtIn = std::make_unique<BuiltInVoices>(scratch, Complain);
        auto folders = std::make_unique<FolderVoices>(
            std::move(places), scratch, std::chrono::steady_clock::now() + kTimeForFolders, *builtIn);
        builtIn_ = builtIn.get();
        folders_ = folders.get();
        catalogue_.Add(std::move(folders));
        catalogue_.Add(std::move(builtIn));
    }
    const VoiceCatalogue& Catalogue() const { return catalogue_; }
    const FolderVoices& Folders() const { return *folders_; }
    const BuiltInVoices& BuiltIn() const { return *builtIn_; }

  private:
    VoiceCatalogue catalogue_;
    FolderVoices* folders_;  ///< this and the next are the catalogue's
    BuiltInVoices* builtIn_;
};

void Tell(const std::string& line) {
    if (!line.empty()) std::printf("say: %s\n", line.c_str());
}

/// Where the user has put something.
struct Places {
    std::vector<std::filesystem::path> voices, pronunciations;
};

std::vector<PronunciationFile> ReadNames(const std::vector<std::filesystem::path>& files) {
    std::vector<PronunciationFile> names;
    for (const std::filesystem::path& file : files) {
        names.push_back(ReadPronunciationFile(file));
        if (const std::string fault = FaultLine(names.back()); !fault.empty()) Complain(fault);
    }
    return names;
}

void SayTo(const Places& places, const std::string& voice, std::string_view text,
           const std::filesystem::path& file, double speed) {
    const std::vector<PronunciationFile> names = ReadNames(places.pronunciations);
    const Voices voices(places.voices, std::filesystem::absolute(file).parent_path());
    Recorder recorder(file);
    const std::string safe = SpokenText(text);
    const SpeakResult result = SpeakFirst(
        voices.Catalogue().Choose(voice),
        [&](const std::string& language) { return WordsToSpeak(safe, names, language); }, speed, recorder);
    Tell(SpokenByLine(voices.Folders(), voice, result));
    Tell(CreditLine(voices.Folders(), result.used));
    if (result.cut) Tell("the text is too long, its speech was cut");
    std::fflush(stdout);
}

/// The application tells its commands, which can't find out by themselves.
Places FindPlaces() {
    const std::filesystem::path folder = sorakaze::ProgramFolder();
    const bool isTold = std::getenv(sorakaze::process::kVoicesVariable) != nullptr;
    return {isTold ? sorakaze::process::VoicePlacesOfCommand() : sorakaze::process::VoicePlaces(folder),
            sorakaze::process::PronunciationFilesOfCommand(folder)};
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
    const Places places = FindPlaces();
    ClearEnvironment();
    const std::span<char*> words(argv, static_cast<std::size_t>(std::max(argc, 0)));
    if (words.size() == 2 && words[1] == std::string_view("--voices")) {
        const Voices voices(places.voices, {});
        std::fputs(VoiceLines(voices.Folders(), voices.BuiltIn()).c_str(), stdout);
        return 0;
    }
    const bool right = (words.size() == 6 || (words.size() == 8 && words[6] == std::string_view("-s"))) &&
                       words[1] == std::string_view("-v") && words[4] == std::string_view("-o");
    const auto speed = right && words.size() == 8 ? ReadSpeed(words[7]) : std::optional(1.0);
    if (!right || !speed) {
        Complain(
            "the call is: say -v VOICE TEXT -o FILE [-s SPEED], the speed from 0.5 to 2, or say --voices");
        return 2;
    }
    try {
        SayTo(places, words[2], words[3], words[5], *speed);
        return 0;
    } catch (const std::exception& problem) {
        Complain(problem.what());
        return 1;
    }
}
