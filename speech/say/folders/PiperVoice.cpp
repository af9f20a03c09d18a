// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/PiperVoice.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "speech/say/voices/BoundedChild.h"
#include "speech/say/voices/SoundFile.h"

namespace sorakaze::speech {
namespace {

constexpr int kUsualRate = 22'050;
/// Between sentences.
constexpr const char* kSentencePause = "0.35";

int RateIn(const std::filesystem::path& config) {
    std::ifstream file(config);
    const auto whole = nlohmann::json::parse(file, nullptr, false);
    const nlohmann::json::json_pointer rate("/audio/sample_rate");
    const bool isThere = whole.is_object() && whole.contains(rate) && whole[rate].is_number_integer();
    return isThere ? whole[rate].get<int>() : kUsualRate;
}

}  // namespace

PiperVoice::PiperVoice(PiperProgram program, VoiceModel model, int speaker, double speed,
                       std::filesystem::path scratch, std::chrono::steady_clock::time_point deadline)
    : program_(std::move(program)),
      model_(std::move(model)),
      speaker_(speaker),
      speed_(speed),
      scratch_(std::move(scratch)),
      deadline_(deadline) {}

/// With underscores the options are known to every version of Piper.
std::vector<std::string> PiperVoice::Words() const {
    std::vector<std::string> words = program_.words;
    char scale[16];
    std::snprintf(scale, sizeof scale, "%.3f", 1 / speed_);
    for (const std::string& word : {std::string("--model"), model_.model.string(), std::string("--config"),
                                    model_.config.string(), std::string("--length_scale"), std::string(scale),
                                    std::string("--sentence_silence"), std::string(kSentencePause)})
        words.push_back(word);
    if (speaker_ != 0) words.insert(words.end(), {"--speaker", std::to_string(speaker_)});
    if (!program_.espeakData.empty())
        words.insert(words.end(), {"--espeak_data", program_.espeakData.string()});
    return words;
}

bool PiperVoice::SpeakToFile(const std::string& line, const SpeechSink& sink) const {
    const SoundFile file(scratch_);
    std::vector<std::string> words = Words();
    words.insert(words.end(), {"--output_file", file.Name()});
    RunChild(words, line, {deadline_}, [](std::string_view) {});
    return file.Pass(sink);
}

void PiperVoice::SpeakRaw(const std::string& line, const SpeechSink& sink) const {
    std::vector<std::string> words = Words();
    words.emplace_back("--output_raw");
    const int rate = RateIn(model_.config);
    std::string bytes;
    RunChild(words, line, {deadline_}, [&](std::string_view more) {
        bytes += more;
        std::vector<std::int16_t> samples(bytes.size() / sizeof(std::int16_t));
        std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(std::int16_t));
        bytes.erase(0, samples.size() * sizeof(std::int16_t));
        sink(rate, samples, BlockStart::WithinWord);
    });
}

void PiperVoice::Speak(const std::string& text, const SpeechSink& sink) {
    try {
        const std::string line = WithoutPhonemeMarks(text) + '\n';
        if (!SpeakToFile(line, sink)) SpeakRaw(line, sink);
    } catch (const ChildFailure& failure) {
        throw std::runtime_error(std::string("Piper: ") + failure.what());
    }
}

std::string WithoutPhonemeMarks(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char letter) { return letter == '[' || letter == ']'; }, ' ');
    return text;
}

}  // namespace sorakaze::speech
