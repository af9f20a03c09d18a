// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/Engine.h"

#include <dlfcn.h>
#include <espeak-ng/espeak_ng.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "base/BlockedSignals.h"

// The engine connects to a sound device when it starts, even if it only returns samples. It calls this
// function for that, and the program's definition precedes the sound library's: there is no device, no
// connection to a sound server and no shared memory for one.
struct audio_object;
extern "C" audio_object* create_audio_device_object(const char* /*device*/, const char* /*application*/,
                                                    const char* /*description*/) {
    return nullptr;
}

namespace sorakaze::speech {
namespace {

constexpr int kBufferMilliseconds = 200;
/// Some variants clip at the engine's usual 100. The leveller compensates for the difference.
constexpr int kVolume = 55;
/// Times the engine's own: English at 175 words a minute. The Japanese voice has pauses of its own.
constexpr double kPace = 0.83;
constexpr const char* kDefaultLanguage = "gmw/en-US";
/// A recogniser understands it best by far (bench/voice).
constexpr const char* kEnglishVariant = "f5";
constexpr const char* kJapanese = "jpx/ja";

/// The current speech, for the plain function to which the engine passes samples.
struct Speech {
    const Engine::Sink* sink;
    std::exception_ptr failure;
    std::size_t passed = 0;  ///< samples

    /// Divides the block where words start.
    void Pass(std::span<const std::int16_t> samples, const espeak_EVENT* events) {
        std::size_t at = 0;
        BlockStart start = BlockStart::WithinWord;
        for (; events->type != espeakEVENT_LIST_TERMINATED; ++events) {
            if (events->type != espeakEVENT_WORD) continue;
            const auto begin = static_cast<std::size_t>(std::max(events->sample, 0));
            const std::size_t word = std::clamp(begin, passed + at, passed + samples.size()) - passed;
            if (word > at) (*sink)(samples.subspan(at, word - at), start);
            start = BlockStart::Word;
            at = word;
        }
        if (at < samples.size()) (*sink)(samples.subspan(at), start);
        passed += samples.size();
    }
};

int TakeSamples(short* samples, int count, espeak_EVENT* events) {
    auto* speech = static_cast<Speech*>(events->user_data);
    if (!samples || !speech || count <= 0) return 0;
    try {
        speech->Pass({samples, static_cast<std::size_t>(count)}, events);
        return 0;
    } catch (...) {
        speech->failure = std::current_exception();
        return 1;
    }
}

/// The engine's voice of this name: its title, one of its language codes, or its file.
std::optional<std::string> FindEngineVoice(const std::string& folded) {
    for (const espeak_VOICE** voice = espeak_ListVoices(nullptr); *voice; ++voice) {
        const std::string file = (*voice)->identifier;
        const auto matches = [&](const std::string& text) { return FoldName(text) == folded; };
        if (matches((*voice)->name) || matches(file) || matches(file.substr(file.rfind('/') + 1)))
            return file;
        // Pairs of a priority byte and a code that ends with a zero byte; a zero priority ends the list.
        for (const char* language = (*voice)->languages; *language;) {
            const std::string code = language + 1;
            if (matches(code)) return file;
            language += code.size() + 2;
        }
    }
    return {};
}

/// The engine's file of a variant, in the spelling that the engine wants.
std::optional<std::string> FindVariant(const std::string& folded) {
    const char* data = nullptr;
    espeak_Info(&data);
    std::error_code ignored;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(data) / "voices" / "!v", ignored)) {
        std::string name = entry.path().filename().string();
        if (FoldName(name) == folded) return name;
    }
    return {};
}

/// Next to the engine's library or in the system's other folders for it; empty if there is
/// none.
std::string DataFolder() {
    namespace fs = std::filesystem;
    std::error_code failure;
    Dl_info library{};
    fs::path beside;
    if (::dladdr(reinterpret_cast<const void*>(&espeak_ng_Initialize), &library) != 0 && library.dli_fname)
        beside = fs::canonical(library.dli_fname, failure).parent_path();
    for (const fs::path& folder : {beside, fs::path("/usr/share"), fs::path("/usr/lib")}) {
        const fs::path data = folder / "espeak-ng-data";
        if (folder.is_absolute() && fs::exists(data / "phontab", failure)) return data;
    }
    return {};
}

std::optional<VoiceLook> FindBase(const std::string& folded) {
    if (auto look = FindFirstName(folded)) return look;
    if (const auto file = FindEngineVoice(folded)) {
        const bool english = file->rfind("gmw/en", 0) == 0;
        return VoiceLook{*file, english ? kEnglishVariant : "", 50, 50, kUsualRate};
    }
    return {};
}

std::optional<VoiceLook> FindVoice(const std::string& name) {
    const std::string folded = FoldName(name);
    if (auto base = FindBase(folded)) return base;
    if (const auto variant = FindVariant(folded)) {
        return VoiceLook{kDefaultLanguage, *variant, 50, 50, kUsualRate};
    }
    const auto plus = folded.rfind('+');
    if (plus == std::string::npos) return {};
    auto base = FindBase(folded.substr(0, plus));
    const auto variant = FindVariant(folded.substr(plus + 1));
    if (!base || !variant) return {};
    base->variant = *variant;
    return base;
}

}  // namespace

Engine::Engine() {
    // The engine would search the user's home and the environment before the system's folder.
    const std::string data = DataFolder();
    if (data.empty()) throw std::runtime_error("the speech engine's data is missing; install espeak-ng-data");
    espeak_ng_InitializePath(data.c_str());
    espeak_ng_ERROR_CONTEXT context = nullptr;
    // The engine starts a thread, which must not receive a signal that the main thread blocks.
    const BlockedSignals held;
    const bool started =
        espeak_ng_Initialize(&context) == ENS_OK &&
        espeak_ng_InitializeOutput(ENOUTPUT_MODE_SYNCHRONOUS, kBufferMilliseconds, nullptr) == ENS_OK;
    espeak_ng_ClearErrorContext(&context);
    if (!started) throw std::runtime_error("the speech engine's data is missing; install espeak-ng-data");
    espeak_SetSynthCallback(TakeSamples);
}

Engine::~Engine() {
    espeak_Terminate();
}

int Engine::SampleRate() const {
    return espeak_ng_GetSampleRate();
}

std::optional<std::string> Engine::LanguageOf(const std::string& name) const {
    const auto look = FindVoice(name);
    return look ? std::optional(LanguageOfVoice(look->voice)) : std::nullopt;
}

void Engine::Choose(const std::string& name, double speed) {
    const auto look = FindVoice(name);
    if (!look) throw std::runtime_error("the speech engine has no voice \"" + name + '"');
    look_ = *look;
    speed_ = speed;
    Use(look_.voice);
}

bool Engine::IsJapanese() const {
    return look_.voice == kJapanese;
}

void Engine::Use(const std::string& voice) {
    if (voice == used_) return;
    const std::string whole = look_.variant.empty() ? voice : voice + "+" + look_.variant;
    if (espeak_ng_SetVoiceByName(whole.c_str()) != ENS_OK) {
        throw std::runtime_error("the voice \"" + whole + "\" isn't installed; install espeak-ng-data");
    }
    used_ = voice;
    espeak_SetParameter(espeakVOLUME, kVolume, 0);
    const double pace = IsJapanese() ? 1 : kPace;
    espeak_SetParameter(espeakRATE, static_cast<int>(std::lround(look_.rate * speed_ * pace)), 0);
    espeak_SetParameter(espeakPITCH, look_.pitch, 0);
    espeak_SetParameter(espeakRANGE, look_.range, 0);
}

void Engine::Speak(const std::string& text, const Sink& sink, Reading reading) {
    Use(reading == Reading::English ? kDefaultLanguage : look_.voice);
    Speech speech{&sink, nullptr, 0};
    // No markup: a text is read literally.
    const unsigned flags = espeakCHARS_UTF8 | (reading == Reading::Phonemes ? espeakPHONEMES : 0);
    const auto status =
        espeak_ng_Synthesize(text.c_str(), text.size() + 1, 0, POS_CHARACTER, 0, flags, nullptr, &speech);
    if (speech.failure) std::rethrow_exception(speech.failure);
    if (status != ENS_OK) throw std::runtime_error("the speech engine couldn't read the text");
}

}  // namespace sorakaze::speech
