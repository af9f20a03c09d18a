// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/FliteEngine.h"

// Some of its headers don't say that they are C.
extern "C" {
#include <flite/cst_cg.h>
#include <flite/flite.h>
}

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <utility>

#include "speech/say/voices/EnglishText.h"

extern "C" {
void usenglish_init(cst_voice* voice);
cst_lexicon* cmu_lex_init();
void cmu_grapheme_lang_init(cst_voice* voice);
cst_lexicon* cmu_grapheme_lex_init();
void cmu_indic_lang_init(cst_voice* voice);
cst_lexicon* cmu_indic_lex_init();
cst_voice* register_cmu_us_slt(const char* folder);
cst_voice* register_cmu_us_rms(const char* folder);
cst_voice* register_cmu_us_awb(const char* folder);
cst_voice* register_cmu_us_kal16(const char* folder);
}

namespace sorakaze::speech {
namespace {

/// Of what is spoken in one call, in bytes: Flite's memory is proportional to it.
constexpr std::size_t kLongestCall = 400;
/// Samples.
constexpr int kBlock = 4096;

cst_voice* LoadVoice(const std::string& name) {
    using Register = cst_voice* (*)(const char*);
    constexpr std::pair<const char*, Register> kVoices[] = {{"slt", register_cmu_us_slt},
                                                            {"rms", register_cmu_us_rms},
                                                            {"awb", register_cmu_us_awb},
                                                            {"kal16", register_cmu_us_kal16}};
    for (const auto& [known, load] : kVoices)
        if (name == known) return load(nullptr);
    if (!name.starts_with('/')) return nullptr;
    flite_add_lang("eng", usenglish_init, cmu_lex_init);
    flite_add_lang("cmu_grapheme_lang", cmu_grapheme_lang_init, cmu_grapheme_lex_init);
    flite_add_lang("cmu_indic_lang", cmu_indic_lang_init, cmu_indic_lex_init);
    return flite_voice_load(name.c_str());
}

/// The standard deviation of the voice's pitch, in hertz; 0 if unknown.
float PitchRange(cst_voice* voice) {
    if (feat_present(voice->features, "cg_db")) {
        const cst_cg_db* database = val_cg_db(feat_val(voice->features, "cg_db"));
        return database ? database->f0_stddev : 0;
    }
    return flite_get_param_float(voice->features, "int_f0_target_stddev", 0);
}

/// The current speech, for the plain function to which Flite passes samples.
struct Speech {
    const SpeechSink* sink;
    double size;
    BlockStart start = BlockStart::Word;
    std::exception_ptr failure{};
};

int TakeSamples(const cst_wave* wave, int start, int size, int /*last*/, cst_audio_streaming_info* info) {
    auto* speech = static_cast<Speech*>(info->userdata);
    if (speech->failure) return CST_AUDIO_STREAM_STOP;
    try {
        const auto rate = static_cast<int>(std::lround(wave->sample_rate * speech->size));
        (*speech->sink)(rate, {wave->samples + start, static_cast<std::size_t>(std::max(size, 0))},
                        std::exchange(speech->start, BlockStart::WithinWord));
        return CST_AUDIO_STREAM_CONT;
    } catch (...) {
        speech->failure = std::current_exception();
        return CST_AUDIO_STREAM_STOP;
    }
}

}  // namespace

// A larger vocal tract is speech that is played more slowly; pitch and pace are made up for that beforehand.
FliteEngine::FliteEngine(const FliteLook& look, double speed) : look_(look) {
    flite_init();
    voice_ = LoadVoice(look_.voice);
    if (!voice_) throw std::runtime_error("Flite can't read the voice " + look_.voice);
    const float range = PitchRange(voice_);
    const float stretch = flite_get_param_float(voice_->features, "duration_stretch", 1);
    const auto times = [](double a, double b) { return static_cast<float>(a * b); };
    flite_feat_set_float(voice_->features, "f0_shift", times(look_.pitch, 1 / look_.size));
    if (range > 0) {
        flite_feat_set_float(voice_->features, "int_f0_target_stddev",
                             times(range, look_.range * look_.pitch / look_.size));
    }
    flite_feat_set_float(voice_->features, "duration_stretch",
                         times(stretch, look_.stretch * look_.size / speed));
}

void FliteEngine::Speak(const std::string& text, const SpeechSink& sink) {
    const std::string english = EnglishText(text);
    // Of marks alone it makes a noise.
    if (std::none_of(english.begin(), english.end(), [](unsigned char byte) { return std::isalnum(byte); }))
        return;
    Speech speech{&sink, look_.size};
    cst_audio_streaming_info* info = new_audio_streaming_info();
    info->min_buffsize = kBlock;
    info->asc = TakeSamples;
    info->userdata = &speech;
    // The voice owns it from here on.
    flite_feat_set(voice_->features, "streaming_info", audio_streaming_info_val(info));
    for (const std::string& part : SpeakableParts(english, kLongestCall)) {
        speech.start = BlockStart::Word;
        flite_text_to_speech(part.c_str(), voice_, "none");
        if (speech.failure) std::rethrow_exception(speech.failure);
    }
}

}  // namespace sorakaze::speech
