// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// say -v VOICE TEXT -o FILE [-s SPEED]: speaks a text into an AIFF file, or a WAV file where its name ends
// so. Exit status 0 when the file is complete, 1 when it could not be made (then nothing is left in its
// folder), 2 for a wrong call. Errors are one line on standard error. Speech is cut after about two minutes,
// and then a line on standard output says so.
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

/// Levels the samples of one voice into the file. The rate of the samples is known when they begin.
class Recorder {
  public:
    explicit Recorder(const char* file) : file_(file) {}

    /// Throws SpeechCut when there is enough.
    void Write(int sampleRate, std::span<const std::int16_t> samples, Place place) {
        if (!leveller_) {
            sound_.emplace(file_, sampleRate);
            leveller_.emplace(sampleRate,
                              [this](std::span<const std::int16_t> levelled) { sound_->Write(levelled); });
            cutter_.emplace(sampleRate,
                            [this](std::span<const std::int16_t> whole) { leveller_->Write(whole); });
        }
        cutter_->Write(samples, place);
    }
    void Finish() {
        leveller_->Finish();
        sound_->Finish();
    }
    bool Begun() const { return leveller_.has_value(); }
    /// For another voice to begin again.
    void Forget() {
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

/// False where Open JTalk isn't installed or fails: then the engine speaks.
bool SayByOpenJTalk(const std::string& voice, const std::string& text, double speed, const char* file,
                    Recorder& recorder) {
    const auto found = FindOpenJTalk({}, FoldName(voice), speed);
    if (!found) return false;
    try {
        const auto folder = std::filesystem::absolute(file).parent_path();
        SpeakOpenJTalk(*found, text, folder, [&](int sampleRate, std::span<const std::int16_t> samples) {
            recorder.Write(sampleRate, samples, Place::Within);
        });
        return recorder.Begun();
    } catch (const std::runtime_error&) {
        recorder.Forget();
        return false;
    }
}

void Speak(Engine& engine, const std::string& voice, const std::string& text, double speed, const char* file,
           Recorder& recorder) {
    const auto record = [&](std::span<const std::int16_t> samples, Place place) {
        recorder.Write(engine.SampleRate(), samples, place);
    };
    const bool silent = text.find_first_not_of(' ') == std::string::npos;
    if (!silent && engine.IsJapanese() && SayByOpenJTalk(voice, text, speed, file, recorder)) return;
    record({}, Place::Within);
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
    const std::string spoken(SpeakableBeginning(whole));
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

/// The engines and their libraries take folders of data and settings from the environment. All that this
/// program takes from there is where scratch files go.
void ClearEnvironment() {
    const char* value = std::getenv("TMPDIR");
    const std::string scratch = value ? value : "";
    clearenv();
    if (!scratch.empty()) setenv("TMPDIR", scratch.c_str(), 1);
}

}  // namespace

// The words are told apart by their places alone: a text may begin with a hyphen.
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
