// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What sound costs: decoding, mixing, limiting, writing. `x` counts seconds of sound per second of the clock.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "sound/Limiter.h"
#include "sound/MixingEngine.h"
#include "sound/desk/OutputStage.h"
#include "sound/desk/TruePeak.h"
#include "sound/encoding/SoundFileWriter.h"

namespace sorakaze::sound {
namespace {

constexpr int kSeconds = 60;
constexpr std::size_t kBlock = kSampleRate / 60;

/// A minute of sound in every format, made once.
class Library {
  public:
    static const Library& Instance() {
        static const Library library;
        return library;
    }
    std::filesystem::path File(const std::string& ending) const { return folder_ / ("minute" + ending); }
    std::span<const float> Samples() const { return samples_; }

  private:
    Library() {
        std::string pattern = (std::filesystem::temp_directory_path() / "sorakaze-bench-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        unsigned noise = 1;
        for (int i = 0; i < kSeconds * kSampleRate; ++i) {
            noise = noise * 1664525 + 1013904223;
            const auto hiss = static_cast<float>(noise >> 8) / float{1 << 24} - 0.5f;
            const auto tone = static_cast<float>(std::sin(i * 0.05) + std::sin(i * 0.0813));
            samples_.insert(samples_.end(), {0.3f * tone + 0.1f * hiss, 0.3f * tone - 0.1f * hiss});
        }
        for (const char* ending : {".wav", ".flac", ".mp3", ".opus", ".m4a", ".oga"}) {
            const auto writer = SoundFileWriter::Create(File(ending));
            writer->Write(samples_);
            writer->Finish();
        }
    }
    ~Library() { std::filesystem::remove_all(folder_); }

    std::filesystem::path folder_;
    std::vector<float> samples_;
};

void CountSound(benchmark::State& state, double seconds) {
    state.counters["x"] =
        benchmark::Counter(seconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

/// A whole file, opened, decoded and mixed.
void Render(benchmark::State& state, const std::string& ending) {
    const auto file = Library::Instance().File(ending);
    std::vector<float> block(kBlock * kChannels);
    for (auto _ : state) {
        MixingEngine engine(MixingMode::Offline);
        const auto voice = engine.Open(file);
        voice->Start();
        while (voice->IsPlaying()) engine.Mix(block);
    }
    CountSound(state, kSeconds);
}

/// One block of as many voices as the argument says; more than one are at a lower gain. In the processor's
/// time, as the mixing thread also waits for the decoders here.
void MixBlock(benchmark::State& state) {
    const auto file = Library::Instance().File(".wav");
    std::vector<float> block(kBlock * kChannels);
    std::unique_ptr<MixingEngine> engine;
    std::vector<std::shared_ptr<Voice>> voices;
    int left = 0;
    for (auto _ : state) {
        if (left-- == 0) {
            state.PauseTiming();
            voices.clear();
            engine = std::make_unique<MixingEngine>(MixingMode::Offline);
            for (int i = 0; i < state.range(0); ++i) {
                voices.push_back(engine->Open(file));
                voices.back()->SetGain(state.range(0) == 1 ? 1.0f : 0.3f);
                voices.back()->Start();
            }
            engine->Mix(block);
            left = kSeconds * 60 - 2;
            state.ResumeTiming();
        }
        engine->Mix(block);
        benchmark::DoNotOptimize(block.data());
    }
    CountSound(state, static_cast<double>(kBlock) / kSampleRate);
}

void MixIdle(benchmark::State& state) {
    MixingEngine engine(MixingMode::RealTime);
    std::vector<float> block(kBlock * kChannels);
    for (auto _ : state) {
        engine.Mix(block);
        benchmark::DoNotOptimize(block.data());
    }
}

/// The library's minute, whose peaks reach 0.65, as loud as the argument says in percent.
template <typename Stage>
void Limit(benchmark::State& state) {
    std::vector<float> sound(Library::Instance().Samples().begin(), Library::Instance().Samples().end());
    for (float& sample : sound) sample *= static_cast<float>(state.range(0)) / 100;
    std::vector<float> block(kBlock * kChannels);
    const auto stage = std::make_unique<Stage>();
    std::size_t at = 0;
    for (auto _ : state) {
        std::copy_n(&sound[at], block.size(), stage->Input(kBlock).begin());
        stage->Process(block);
        benchmark::DoNotOptimize(block.data());
        at = at + 2 * block.size() > sound.size() ? 0 : at + block.size();
    }
    CountSound(state, static_cast<double>(kBlock) / kSampleRate);
}

void MeasureTruePeak(benchmark::State& state) {
    for (auto _ : state) {
        TruePeak peak;
        peak.Add(Library::Instance().Samples());
        benchmark::DoNotOptimize(peak.Peak());
    }
    CountSound(state, kSeconds);
}

void Write(benchmark::State& state, const std::string& ending, Dither dither) {
    const auto file = Library::Instance().File(".written" + ending);
    for (auto _ : state) {
        const auto writer = SoundFileWriter::Create(file, dither);
        writer->Write(Library::Instance().Samples());
        writer->Finish();
    }
    CountSound(state, kSeconds);
}

BENCHMARK_CAPTURE(Render, wav, ".wav")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Render, flac, ".flac")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Render, mp3, ".mp3")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Render, aac, ".m4a")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Render, opus, ".opus")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Render, vorbis, ".oga")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(MixBlock)->Arg(1)->Arg(3);
BENCHMARK(MixIdle);
BENCHMARK_TEMPLATE(Limit, Limiter)->Arg(50)->Arg(100)->Arg(200);
BENCHMARK_TEMPLATE(Limit, OutputStage)->Arg(50)->Arg(100)->Arg(200);
BENCHMARK(MeasureTruePeak)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Write, wav, ".wav", Dither::None)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Write, wav_dithered, ".wav", Dither::Triangular)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Write, flac, ".flac", Dither::None)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Write, mp3, ".mp3", Dither::None)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace sorakaze::sound
