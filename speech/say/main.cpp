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
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "speech/say/Engine.h"
#include "speech/say/JapaneseText.h"
#include "speech/say/JapaneseVoice.h"
#include "speech/say/Leveller.h"
#include "speech/say/LongestSpeech.h"
#include "speech/say/OpenJTalk.h"
#include "speech/say/SpeechFile.h"
#include "speech/say/SpokenText.h"
#include "speech/say/VoiceNames.h"

namespace {

using namespace sorakaze::speech;

void Complain(std::string_view message) {
    std::fprintf(stderr, "say: %s\n", SpokenText(message).c_str());
}

/// Levels the samples of one voice into the file. Their rate is known with the first of them.
class Recorder {
  public:
    explicit Recorder(const char* file) : file_(file) {}

    /// Throws SpeechCut when the speech is too long.
    void Write(int sampleRate, std::span<const std::int16_t> samples, BlockStart start) {
        if (!leveller_) {
            sound_.emplace(file_, sampleRate);
            leveller_.emplace(sampleRate,
                              [this](std::span<const std::int16_t> levelled) { sound_->Write(levelled); });
            cutter_.emplace(sampleRate,
                            [this](std::span<const std::int16_t> whole) { leveller_->Write(whole); });
        }
        cutter_->Write(samples, start);
    }
    void Finish() {
        leveller_->Finish();
        sound_->Finish();
    }
    bool HasStarted() const { return leveller_.has_value(); }
    /// So that another voice can start again.
    void Reset() {
        cutter_.reset();
        leveller_.reset();
        sound_.reset();
    }

  private:
    const char* file_;
    std::optional<SpeechFile> sound_;
    std::optional<Leveller> leveller_;
    std::optional<SpeechCutter> cutter_;
};

/// False if Open JTalk isn't installed, or if it fails, which is complained of; then the engine speaks.
bool SayByOpenJTalk(const std::string& voice, const std::string& text, double speed, const char* file,
                    Recorder& recorder) {
    const auto found = FindOpenJTalk({}, FoldName(voice), speed);
    if (!found) return false;
    try {
        const auto folder = std::filesystem::absolute(file).parent_path();
        SpeakOpenJTalk(*found, text, folder, [&](int sampleRate, std::span<const std::int16_t> samples) {
            recorder.Write(sampleRate, samples, BlockStart::WithinWord);
        });
        if (recorder.HasStarted()) return true;
        Complain("open_jtalk made no sound, so that the plainer voice speaks");
    } catch (const std::runtime_error& problem) {
        recorder.Reset();
        Complain(std::string(problem.what()) + ", so that the plainer voice speaks");
    }
    return false;
}

void Speak(Engine& engine, const std::string& voice, const std::string& text, double speed, const char* file,
           Recorder& recorder) {
    const auto record = [&](std::span<const std::int16_t> samples, BlockStart start) {
        recorder.Write(engine.SampleRate(), samples, start);
    };
    const bool silent = text.find_first_not_of(' ') == std::string::npos;
    if (!silent && engine.IsJapanese() && SayByOpenJTalk(voice, text, speed, file, recorder)) return;
    record({}, BlockStart::WithinWord);
    if (!silent && engine.IsJapanese()) {
        SpeakJapanese(engine, sorakaze::japanese::OpenReader(Complain), text, speed, record);
    } else if (!silent) {
        engine.Speak(text, record);
    }
}

void SayTo(const std::string& voice, std::string_view text, const char* file, double speed) {
    Engine engine;
    engine.Choose(voice, speed);
    Recorder recorder(file);
    const std::string whole = OrdinaryForms(SpokenText(text));
    const std::string spoken(SpeakablePrefix(whole));
    bool cut = spoken.size() < whole.size();
    try {
        Speak(engine, voice, spoken, speed, file, recorder);
    } catch (const SpeechCut&) {
        cut = true;
    }
    recorder.Finish();
    if (!cut) return;
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
