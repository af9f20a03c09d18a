// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/HtsVoice.h"

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "speech/say/voices/BoundedChild.h"
#include "speech/say/voices/EnglishText.h"
#include "speech/say/voices/SoundFile.h"

namespace sorakaze::speech {
namespace {

constexpr const char* kProgram = "/usr/bin/text2wave";
constexpr const char* kSlt = "/usr/share/festival/voices/us/cmu_us_slt_arctic_hts/hts";
/// Times the voice's own: 175 words a minute.
constexpr double kPace = 0.91;
constexpr std::chrono::seconds kLongest{12};

/// A path as text in the program's language, which has no way to write these marks.
std::string Quoted(const std::filesystem::path& path) {
    if (path.string().find_first_of("\"\\") != std::string::npos)
        throw std::runtime_error("HTS can't read a path with quotation marks");
    return '"' + path.string() + '"';
}

}  // namespace

std::optional<HtsLook> FindHtsLook(std::string_view folded) {
    if (folded == "samantha") return HtsLook{{}, 1};
    if (folded == "allison") return HtsLook{{}, 0.95};
    if (folded == "susan") return HtsLook{{}, 1.04};
    return {};
}

bool HasHts() {
    std::error_code failure;
    return std::filesystem::exists(kProgram, failure) && std::filesystem::exists(kSlt, failure);
}

HtsVoice::HtsVoice(HtsLook look, double speed, std::filesystem::path scratch)
    : look_(std::move(look)), speed_(speed), scratch_(std::move(scratch)) {
    if (!HasHts()) throw std::runtime_error("the packages festival and festvox-us-slt-hts aren't installed");
}

// What is given first holds; the voice's own settings follow.
void HtsVoice::Speak(const std::string& text, const SpeechSink& sink) {
    char rate[16];
    std::snprintf(rate, sizeof rate, "%.3f", kPace * speed_ / look_.size);
    const std::string voice = look_.voice.empty() ? "" : "(list \"-m\" " + Quoted(look_.voice) + ") ";
    const std::string settings =
        "(begin (voice_cmu_us_slt_arctic_hts) (set! hts_engine_params (append (list " + voice +
        "(list \"-r\" " + rate + ")) hts_engine_params)))";
    const SoundFile file(scratch_);
    try {
        RunChild({kProgram, "-eval", settings, "-o", file.Name()}, EnglishText(text) + '\n',
                 {std::chrono::steady_clock::now() + kLongest}, [](std::string_view) {});
    } catch (const ChildFailure& failure) {
        throw std::runtime_error(std::string("HTS: ") + failure.what());
    }
    if (!file.Pass(sink, look_.size)) throw std::runtime_error("HTS: it made no sound");
}

}  // namespace sorakaze::speech
