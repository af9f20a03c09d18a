// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// play_mutants SECONDS|COUNTx [SEED [FIRST]]: damages real files and plays them until the time is over, or so
// many. Each goes the whole way that a file of a show takes: its tags are read, it is opened, started, mixed
// and dropped, through the real decoder program. The one being played is in the working folder and stays
// there if something is wrong.
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <span>
#include <sstream>
#include <string>

#include "player/Tags.h"
#include "sound/MixingEngine.h"
#include "sound/encoding/SoundFileWriter.h"
#include "tests/sound/Mutator.h"
#include "tests/sound/Traces.h"

using namespace sorakaze;
using namespace sorakaze::sound;
using namespace sorakaze::sound::testing;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int64_t kBlock = 800;

struct Wrong {
    std::string why;
};
void Check(bool holds, const std::string& why) {
    if (!holds) throw Wrong{why};
}

class DamagedFiles {
  public:
    DamagedFiles() {
        const auto writer = SoundFileWriter::Create("good.wav");
        writer->Write(std::vector<float>(std::size_t{kSampleRate} * kChannels, 0.25f));
        writer->Finish();
        PlayGood(offline_);
        before_ = Traces::Now();
        before_.workers = before_.rings = 0;
    }

    /// Plays `file` as `number` says: on the air or not, to its end or not. True if it was opened. Throws
    /// Wrong.
    bool Play(const std::filesystem::path& file, std::uint64_t number) {
        constexpr std::int64_t kMost = std::int64_t{5} * kSampleRate;
        MixingEngine& engine = number % 4 == 0 ? realTime_ : offline_;
        player::ReadTags(engine, file);
        auto voice = engine.Open(file);
        const bool opened = voice != nullptr;
        if (voice) {
            if (number % 7 != 0) voice->Start();
            Mix(engine, *voice,
                number % 3 == 0 ? kMost : static_cast<std::int64_t>(number * 977 % (kSampleRate / 2)));
        }
        voice.reset();
        MixRest(engine);
        TakeFailures(engine, file);
        engine.ForgetBadFiles();
        if (number % 16 == 0) PlayGood(offline_);
        return opened;
    }

    /// After all files: nothing of them is left. Throws Wrong.
    void CheckTraces() {
        const Traces after = Traces::Settled(before_);
        std::ostringstream text;
        text << "left over: " << after << "; before: " << before_;
        Check(after.descriptors <= before_.descriptors && after.children <= before_.children &&
                  after.workers == 0 && after.rings == 0,
              text.str());
        PlayGood(offline_);
    }

    void PrintFailures() const {
        for (const auto& [why, times] : failures_) std::printf("%6d %s\n", times, why.c_str());
    }

  private:
    static void CheckSamples(std::span<const float> samples) {
        for (const float sample : samples)
            Check(std::fabs(sample) <= 1.0f, "a sample is " + std::to_string(sample));
    }

    static void Mix(MixingEngine& engine, Voice& voice, std::int64_t frames) {
        std::array<float, kBlock * kChannels> block;
        std::int64_t position = 0;
        for (; frames > 0 && voice.IsPlaying(); frames -= kBlock) {
            engine.Mix(block);
            CheckSamples(block);
            const std::int64_t now = voice.Position().count;
            Check(now >= position && now <= position + kBlock, "the position jumps");
            position = now;
        }
    }

    /// A voice that was dropped is freed by the mixing that fades it.
    static void MixRest(MixingEngine& engine) {
        std::array<float, kBlock * kChannels> rest;
        engine.Mix(rest);
        CheckSamples(rest);
    }

    /// What came before must not disturb what comes now.
    static void PlayGood(MixingEngine& engine) {
        auto voice = engine.Open("good.wav");
        Check(voice != nullptr, "a good file isn't opened any more");
        voice->Start();
        Mix(engine, *voice, kSampleRate / 10);
        Check(voice->Position().count == kSampleRate / 10, "a good file isn't played any more");
        voice.reset();
        MixRest(engine);
    }

    void TakeFailures(MixingEngine& engine, const std::filesystem::path& file) {
        const auto failures = engine.TakeFailures();
        // One decoder read the tags, one was to play it.
        Check(failures.size() <= 2, "more failures than decoders");
        for (const DecoderFailure& failure : failures) {
            Check(failure.file == file, "a failure of " + failure.file.string() + ": " + failure.why);
            Check(!failure.why.ends_with("status 99"), "a sanitizer ended the decoder");
            std::printf("%s: %s\n", file.filename().c_str(), failure.why.c_str());
            ++failures_[failure.why];
        }
    }

    MixingEngine offline_{MixingMode::Offline}, realTime_{MixingMode::RealTime};
    Traces before_{};
    std::map<std::string, int> failures_;
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
    DamagedFiles files;
    std::uint64_t number = first, opened = 0;
    const auto play = [&](const SampleFile& sample) {
        const auto file = std::filesystem::absolute(std::to_string(number) + sample.ending);
        std::ofstream(file, std::ios::binary) << sample.bytes;
        const bool plays = files.Play(file, number);
        std::filesystem::remove(file);
        return plays;
    };
    try {
        for (const SampleFile& sample : samples) Check(play(sample), "undamaged " + sample.ending);
        for (; counted ? number < first + most : Clock::now() < end; ++number)
            opened += play(mutator.Make(number));
        files.CheckTraces();
        Check(number - first < 100 || opened > (number - first) / 4,
              "most aren't even opened: that proves little");
    } catch (const Wrong& wrong) {
        std::printf("seed %llu, number %llu: %s\n", static_cast<unsigned long long>(seed),
                    static_cast<unsigned long long>(number), wrong.why.c_str());
        return 1;
    }
    files.PrintFailures();
    std::printf("stat::number_of_executed_units: %llu\n", static_cast<unsigned long long>(number - first));
}
