// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a tick costs, what loading a program costs, and how fast text is searched.
#include <benchmark/benchmark.h>

#include <string>

#include "app/runtime/Application.h"
#include "tests/support/TestShow.h"

namespace {

using namespace sorakaze;

/// Three threads in waits and the timer running, without sound; one iteration is 6000 ticks.
void TickWithThreeThreadsWaiting(benchmark::State& state) {
    test::TestRuntime test;
    Thread threads[3];
    for (Thread& thread : threads) {
        thread.RunEvent = [] {
            const std::int32_t start = Ticks();
            WaitWhile([start] { return static_cast<double>(Ticks() - start) < 1e12; });
        };
        thread.Run();
    }
    Timer timer;
    timer.SetPeriod(200);
    timer.Action = [] {};
    timer.SetMode(Timer::kMultiple);
    for ([[maybe_unused]] auto _ : state) test.Pass(6000);
    state.counters["per_tick"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * 6000,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(TickWithThreeThreadsWaiting)->Unit(benchmark::kMicrosecond);

/// The same for a day.
void ADayWithThreeThreadsWaiting(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        test::TestRuntime test;
        Thread threads[3];
        for (Thread& thread : threads) {
            thread.RunEvent = [] { WaitWhile([] { return Ticks() < 24 * 60 * 60 * 60 + 1; }); };
            thread.Run();
        }
        test.Pass(24 * 60 * 60 * 60);
    }
}
BENCHMARK(ADayWithThreeThreadsWaiting)->Unit(benchmark::kSecond)->Iterations(1);

void TickWithAPlayingTrack(benchmark::State& state) {
    test::TestShow show("mode: songs 1\nopening: 0, play [[iTunes]]\n");
    show.player.tracks[0].ticks = 1 << 30;
    show.window.programStart.Push();
    show.Pass(60);
    show.window.mainTimer.SetMode(Timer::kOff);
    for ([[maybe_unused]] auto _ : state) show.window.mainTimer_Action();
}
BENCHMARK(TickWithAPlayingTrack)->Unit(benchmark::kMicrosecond);

void LoadProgramOf10000Lines(benchmark::State& state) {
    std::string file = "program: Morning\nstation: Radio\nmode: songs 5\n";
    for (int i = 0; i < 10000; ++i) {
        file += "intro: " + std::to_string(i % 10) + ", say Next comes [[song]] by [[name]], line " +
                std::to_string(i) + ".\n";
    }
    test::TestShow show(file);
    for ([[maybe_unused]] auto _ : state) show.window.readProgram("Show");
}
BENCHMARK(LoadProgramOf10000Lines)->Unit(benchmark::kMillisecond);

String MixedText() {
    std::string text;
    while (text.size() < 4u << 20)
        text += "The quick brown fox 素早い茶色の狐が jumps over のろまな犬 the lazy dog. ";
    return text;
}

void Report(benchmark::State& state, const String& text) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.Bytes().size()));
}

void InStrOn4Megabytes(benchmark::State& state) {
    const String text = MixedText() + "needle";
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(InStr(text, "NEEDLE"));
    Report(state, text);
}
BENCHMARK(InStrOn4Megabytes);

void InStrOn4MegabytesJapaneseNeedle(benchmark::State& state) {
    const String text = MixedText() + "宇多田";
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(InStr(text, "宇多田"));
    Report(state, text);
}
BENCHMARK(InStrOn4MegabytesJapaneseNeedle);

void NthFieldOn4Megabytes(benchmark::State& state) {
    const String text = MixedText();
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(NthField(text, "<p>", 2));
    Report(state, text);
}
BENCHMARK(NthFieldOn4Megabytes);

void ReplaceAllOn4Megabytes(benchmark::State& state) {
    const String text = MixedText();
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(ReplaceAll(text, "LAZY", "energetic"));
    Report(state, text);
}
BENCHMARK(ReplaceAllOn4Megabytes);

}  // namespace
