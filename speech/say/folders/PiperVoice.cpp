// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/PiperVoice.h"

#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/FileDescriptor.h"
#include "speech/say/ScratchFile.h"
#include "speech/say/folders/BoundedChild.h"

namespace sorakaze::speech {
namespace {

constexpr int kUsualRate = 22'050;
/// Between sentences.
constexpr const char* kSentencePause = "0.35";

/// A file that is removed at the end of its scope.
class SoundFile {
  public:
    explicit SoundFile(const std::filesystem::path& folder) : descriptor_(MakeScratchFile(folder, name_)) {
        if (!descriptor_) throw std::runtime_error("there is no folder for its sound");
    }
    ~SoundFile() { ::unlink(name_.c_str()); }
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;
    const std::string& Name() const { return name_; }

  private:
    std::string name_;
    FileDescriptor descriptor_;
};

/// True if the file is a sound with at least one sample.
bool PassSound(const std::string& file, const SpeechSink& sink) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> sound(sf_open(file.c_str(), SFM_READ, &info), sf_close);
    if (!sound || info.channels != 1) return false;
    bool passed = false;
    std::array<std::int16_t, 4096> block;
    for (sf_count_t read = 0; (read = sf_read_short(sound.get(), block.data(), block.size())) > 0;
         passed = true)
        sink(info.samplerate, std::span(block).first(static_cast<std::size_t>(read)), BlockStart::WithinWord);
    return passed;
}

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
    return PassSound(file.Name(), sink);
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
