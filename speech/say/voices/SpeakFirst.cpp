// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/SpeakFirst.h"

#include <stdexcept>

#include "base/Utf8.h"
#include "base/unicode/Characters.h"
#include "speech/say/LongestSpeech.h"

namespace sorakaze::speech {
namespace {

/// What a text without a sound becomes, which the leveller makes as long as it has to be.
constexpr int kSilenceRate = 22'050;

bool HasWord(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        if (unicode::IsAlphanumeric(code)) return true;
        at += size;
    }
    return false;
}

/// True if the speech was cut.
bool Speak(const VoiceCandidate& candidate, const std::string& text, double speed, Recorder& recorder) {
    const std::string_view spoken = SpeakablePrefix(text);
    if (!HasWord(spoken)) {
        recorder.Write(kSilenceRate, {}, BlockStart::WithinWord);
        return false;
    }
    bool began = false;
    try {
        const auto engine = candidate.start(speed);
        engine->Speak(std::string(spoken),
                      [&](int rate, std::span<const std::int16_t> samples, BlockStart start) {
                          began = true;
                          recorder.Write(rate, samples, start);
                      });
    } catch (const SpeechCut&) {
        return true;
    }
    if (!began) recorder.Write(kSilenceRate, {}, BlockStart::WithinWord);
    return spoken.size() < text.size();
}

}  // namespace

SpeakResult SpeakFirst(const VoiceChoice& choice, const TextForLanguage& text, double speed,
                       Recorder& recorder) {
    if (choice.candidates.empty()) {
        throw std::runtime_error("no voice is called \"" + choice.asked +
                                 "\"; try Alex, Samantha, Daniel, Moira, Kyoko, en-gb or en-us+f3");
    }
    SpeakResult result;
    for (const VoiceCandidate& candidate : choice.candidates) {
        const bool last = &candidate == &choice.candidates.back();
        const std::string words = text(candidate.language);
        const bool silent = !HasWord(words);
        recorder.Prepare({candidate.gain, std::chrono::duration<double>(candidate.pause).count()});
        try {
            result.cut = Speak(candidate, words, speed, recorder);
            if (recorder.HasSound() || silent || last) {
                result.used = candidate;
                break;
            }
            result.passedOver.push_back({candidate, "it made no sound"});
        } catch (const SpeechFileError&) {
            throw;
        } catch (const std::runtime_error& problem) {
            if (last) throw;
            result.passedOver.push_back({candidate, problem.what()});
        }
        recorder.Reset();
    }
    recorder.Finish();
    return result;
}

}  // namespace sorakaze::speech
