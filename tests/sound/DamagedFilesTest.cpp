// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Hostile and damaged sound files through the whole path. scripts/fuzz plays many more of them.
#include <gtest/gtest.h>

#include "tests/sound/DamagedFiles.h"
#include "tests/sound/Mutator.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

TEST(DamagedFiles, HurtNothingButThemselves) {
    constexpr std::uint64_t kSeed = 10, kCount = 420;
    const auto samples = MakeSampleFiles();
    const Mutator mutator(samples, kSeed);
    const ScratchFolder folder;
    WriteSound(folder / "good.wav", Constant(0.25f, kSampleRate));
    DamagedFiles files(Decoders::OfProcess(), folder / "good.wav");
    for (std::uint64_t number = 0; number < samples.size(); ++number) {
        const auto whole = folder.Write("whole" + samples[number].ending, samples[number].bytes);
        EXPECT_EQ(files.Play(whole, number), "") << "undamaged: " << number;
        EXPECT_EQ(files.Played(), static_cast<int>(number) + 1) << samples[number].ending;
    }
    for (std::uint64_t number = 0; number < kCount; ++number) {
        const SampleFile damaged = mutator.Make(number);
        const auto file = folder.Write("damaged" + damaged.ending, damaged.bytes);
        EXPECT_EQ(files.Play(file, number), "") << "seed " << kSeed << ", number " << number;
    }
    EXPECT_EQ(files.CheckTraces(), "");
    EXPECT_GT(files.Played(), static_cast<int>(kCount / 4)) << "most aren't even opened: that proves little";
}

}  // namespace
}  // namespace sorakaze::sound::testing
