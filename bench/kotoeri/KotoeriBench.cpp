// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a Japanese title costs: read in the process, by a process of its own, and as a show has it spelt in
// Latin letters.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <string>

#include "speech/kotoeri/Hiragana.h"
#include "tests/support/TestShow.h"

namespace {

using namespace sorakaze;

/// Twenty characters with the blank, in two runs.
constexpr const char* kTitle = "夜明けの歌を君に贈る 春の風が街に吹くよ";

void OneReading(benchmark::State& state) {
    const japanese::Reader reader{japanese::Dictionary()};
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(kotoeri::InHiragana(reader, kTitle));
}
BENCHMARK(OneReading)->Unit(benchmark::kMicrosecond);

void ALongReading(benchmark::State& state) {
    const japanese::Reader reader{japanese::Dictionary()};
    std::string text;
    for (int i = 0; i < 250; ++i) text += kTitle;
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(kotoeri::InHiragana(reader, text));
}
BENCHMARK(ALongReading)->Unit(benchmark::kMillisecond);

void OneProcess(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::string words[] = {KOTOERI_PROGRAM, "-o", kTitle};
        char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        pid_t process = 0;
        int status = 1;
        if (posix_spawn(&process, KOTOERI_PROGRAM, &actions, nullptr, arguments, nullptr) == 0)
            waitpid(process, &status, 0);
        posix_spawn_file_actions_destroy(&actions);
        if (status != 0) state.SkipWithError("the program failed");
    }
}
BENCHMARK(OneProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Two processes, each by the shell and confined.
void ATitleInTwoRuns(benchmark::State& state) {
    test::TestShow show;
    std::filesystem::copy_file(KOTOERI_PROGRAM,
                               show.folder.Path() / "Sorakaze.app/Contents/Resources/SayKotoeri");
    for ([[maybe_unused]] auto _ : state) {
        if (show.window.convertRoma(kTitle).Bytes() !=
            "yoake no uta wo kimi ni okuru haru no kaze ga machi ni fuku yo")
            state.SkipWithError("it is read otherwise");
    }
}
BENCHMARK(ATitleInTwoRuns)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
