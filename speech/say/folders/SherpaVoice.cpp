// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/SherpaVoice.h"

#include <dlfcn.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <utility>

#include "speech/say/folders/PiperVoice.h"

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kThreads = 2;
constexpr std::pair<int, int> kOldest{1, 12};
constexpr int kOldestPatch = 10;

template <typename Function>
Function Find(void* library, const char* name) {
    auto* const found = ::dlsym(library, name);
    if (!found) throw std::runtime_error(std::string("sherpa-onnx has no ") + name);
    return reinterpret_cast<Function>(found);
}

void CheckVersion(const char* text) {
    int major = 0, minor = 0, patch = 0;
    const bool known = text && std::sscanf(text, "%d.%d.%d", &major, &minor, &patch) == 3;
    const std::pair version(major, minor);
    if (!known || major != kOldest.first || version < kOldest || (version == kOldest && patch < kOldestPatch))
        throw std::runtime_error(std::string("sherpa-onnx ") + (text ? text : "") +
                                 " is none of the versions from 1.12.10 to before 2");
}

/// The addresses that a command may reserve at most, in place of the few that it usually gets.
void AllowAddresses() {
    rlimit limit{};
    ::getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_AS, &limit);
}

/// Null for an empty path.
const char* Text(const fs::path& path) {
    return path.empty() ? nullptr : path.c_str();
}

sherpa::Config ConfigFor(const VoiceModel& model) {
    sherpa::Config config{};
    config.threads = kThreads;
    const char *file = Text(model.model), *tokens = Text(model.tokens), *lexicons = Text(model.lexicons),
               *data = Text(model.espeakData), *speakers = Text(model.speakers);
    switch (model.kind) {
        case NeuralKind::Vits:
            config.vits = {file, data ? nullptr : lexicons, tokens, data, 0, 0, 0, nullptr};
            break;
        case NeuralKind::Matcha:
            config.matcha = {file, Text(model.vocoder), lexicons, tokens, data, 0, 0, nullptr};
            break;
        case NeuralKind::Kokoro:
            config.kokoro = {file, speakers, tokens, data, 0, nullptr, lexicons, nullptr};
            break;
        case NeuralKind::Kitten:
            config.kitten = {file, speakers, tokens, data, 0};
            break;
    }
    return config;
}

/// The current speech, for the plain function to which the library passes samples.
struct Speech {
    const SpeechSink& sink;
    int sampleRate;
    std::exception_ptr failure;
};

std::int32_t PassSamples(const float* samples, std::int32_t count, void* data) {
    auto& speech = *static_cast<Speech*>(data);
    if (!samples || count <= 0) return 1;
    std::vector<std::int16_t> block(static_cast<std::size_t>(count));
    std::transform(samples, samples + count, block.begin(), [](float sample) {
        // A model may give anything, even what is no number.
        return static_cast<std::int16_t>(
            std::lround(std::isnan(sample) ? 0 : std::clamp(sample, -1.F, 1.F) * 32767));
    });
    try {
        speech.sink(speech.sampleRate, block, BlockStart::WithinWord);
        return 1;
    } catch (...) {
        speech.failure = std::current_exception();
        return 0;
    }
}

}  // namespace

SherpaVoice::SherpaVoice(const fs::path& library, const VoiceModel& model, int speaker, double speed)
    : speaker_(speaker), speed_(static_cast<float>(speed)) {
    AllowAddresses();
    void* const loaded = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!loaded) throw std::runtime_error(std::string("sherpa-onnx can't be loaded: ") + ::dlerror());
    CheckVersion(Find<sherpa::GetVersion>(loaded, sherpa::kGetVersion)());
    const sherpa::Config config = ConfigFor(model);
    model_ = Find<sherpa::Create>(loaded, sherpa::kCreate)(&config);
    if (!model_) throw std::runtime_error("sherpa-onnx can't use the model");
    sampleRate_ = Find<sherpa::GetSampleRate>(loaded, sherpa::kGetSampleRate)(model_);
    generate_ = Find<sherpa::Generate>(loaded, sherpa::kGenerate);
}

void SherpaVoice::Speak(const std::string& text, const SpeechSink& sink) {
    Speech speech{sink, sampleRate_, nullptr};
    generate_(model_, WithoutPhonemeMarks(text).c_str(), speaker_, speed_, &PassSamples, &speech);
    if (speech.failure) std::rethrow_exception(speech.failure);
}

fs::path FindSherpa(const std::vector<fs::path>& places) {
    std::error_code failure;
    for (const fs::path& place : places)
        for (const char* below :
             {"", "lib", "sherpa-onnx", "sherpa-onnx/lib", "node_modules/sherpa-onnx-linux-x64",
              "node_modules/sherpa-onnx-linux-arm64"}) {
            const fs::path file = place / below / sherpa::kLibrary;
            if (fs::is_regular_file(file, failure)) return file;
        }
    for (const char* folder :
         {"/usr/local/lib", "/usr/lib", "/usr/lib/x86_64-linux-gnu", "/usr/lib/aarch64-linux-gnu"}) {
        const fs::path file = fs::path(folder) / sherpa::kLibrary;
        if (fs::is_regular_file(file, failure)) return file;
    }
    return {};
}

}  // namespace sorakaze::speech
