// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// play_mutants SECONDS|COUNTx [SEED [FIRST]]: damages real files and plays them until the time is over, or
// so many. The one being played lies in the working folder and stays there if the process crashes.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "sound/encoding/SoundFileWriter.h"
#include "tests/sound/DamagedFiles.h"
#include "tests/sound/Mutator.h"

using namespace sorakaze::sound;
using namespace sorakaze::sound::testing;

namespace {

using Clock = std::chrono::steady_clock;

void WriteGood(const std::filesystem::path& file) {
    const auto writer = SoundFileWriter::Create(file);
    writer->Write(std::vector<float>(std::size_t{kSampleRate} * kChannels, 0.25f));
    writer->Finish();
}

struct Slowest {
    Clock::duration time{};
    std::uint64_t number = 0;
};

}  // namespace

int main(int count, char** words) {
    const std::string amount = count > 1 ? words[1] : "10";
    const bool counted = amount.ends_with('x');
    const std::uint64_t seed = count > 2 ? std::strtoull(words[2], nullptr, 10) : std::random_device()();
    const std::uint64_t first = count > 3 ? std::strtoull(words[3], nullptr, 10) : 0;
    const auto most = std::strtoull(amount.c_str(), nullptr, 10);
    const auto end = Clock::now() + std::chrono::seconds(most);
    std::printf("seed %llu\n", static_cast<unsigned long long>(seed));

    const auto samples = MakeSampleFiles();
    const Mutator mutator(samples, seed);
    WriteGood("good.wav");
    DamagedFiles files(Decoders::OfProcess(), std::filesystem::absolute("good.wav"));
    Slowest slowest;
    std::uint64_t number = first;
    std::string wrong;
    for (; wrong.empty() && (counted ? number < first + most : Clock::now() < end); ++number) {
        const SampleFile mutant = mutator.Make(number);
        const auto file = std::filesystem::absolute("mutant" + mutant.ending);
        std::ofstream(file, std::ios::binary) << mutant.bytes;
        const auto begun = Clock::now();
        wrong = files.Play(file, number);
        if (Clock::now() - begun > slowest.time) slowest = {Clock::now() - begun, number};
        if (!files.LastFailure().empty())
            std::printf("%llu%s: %s\n", static_cast<unsigned long long>(number), mutant.ending.c_str(),
                        files.LastFailure().c_str());
        if (wrong.empty()) std::filesystem::remove(file);
    }
    if (wrong.empty()) wrong = files.CheckTraces();
    for (const auto& [why, times] : files.Failures()) std::printf("%6d %s\n", times, why.c_str());
    std::printf("the slowest: %llu, %.2f s\n", static_cast<unsigned long long>(slowest.number),
                std::chrono::duration<double>(slowest.time).count());
    std::printf("stat::number_of_executed_units: %llu\n", static_cast<unsigned long long>(number - first));
    if (wrong.empty()) return 0;
    std::printf("seed %llu, number %llu: %s\n", static_cast<unsigned long long>(seed),
                static_cast<unsigned long long>(number - 1), wrong.c_str());
    return 1;
}
