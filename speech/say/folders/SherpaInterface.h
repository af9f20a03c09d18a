// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What is used of sherpa-onnx's C interface, as its versions from 1.12.10 on have it. The library is loaded
// at run time if it is there.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sorakaze::speech::sherpa {

// An empty member has its usual value there: null for no path, zero for no number.

struct Vits {
    const char *model, *lexicon, *tokens, *dataFolder;
    float noiseScale, noiseScaleOfLengths, lengthScale;
    const char* unused;
};

struct Matcha {
    const char *acousticModel, *vocoder, *lexicon, *tokens, *dataFolder;
    float noiseScale, lengthScale;
    const char* unused;
};

struct Kokoro {
    const char *model, *voices, *tokens, *dataFolder;
    float lengthScale;
    const char *unused, *lexicon, *language;
};

struct Kitten {
    const char *model, *voices, *tokens, *dataFolder;
    float lengthScale;
};

struct Config {
    Vits vits;
    std::int32_t threads;
    std::int32_t debug;
    const char* provider;
    Matcha matcha;
    Kokoro kokoro;
    Kitten kitten;
    /// Each version has more kinds of models here, and after them settings of which none is needed.
    std::array<std::byte, 4096> empty;
};

struct Speaker;  ///< a loaded model
struct Audio;

/// Takes samples from -1 to 1; 0 ends the speech.
using TakeSamples = std::int32_t (*)(const float* samples, std::int32_t count, void* data);

using GetVersion = const char* (*)();
using Create = const Speaker* (*)(const Config*);
using GetSampleRate = std::int32_t (*)(const Speaker*);
using Generate = const Audio* (*)(const Speaker*, const char* text, std::int32_t speaker, float speed,
                                  TakeSamples, void* data);

constexpr const char* kLibrary = "libsherpa-onnx-c-api.so";
constexpr const char* kGetVersion = "SherpaOnnxGetVersionStr";
constexpr const char* kCreate = "SherpaOnnxCreateOfflineTts";
constexpr const char* kGetSampleRate = "SherpaOnnxOfflineTtsSampleRate";
constexpr const char* kGenerate = "SherpaOnnxOfflineTtsGenerateWithCallbackWithArg";

}  // namespace sorakaze::speech::sherpa
