// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Files that lie, and files that end whoever reads them: each is played as what it is or refused, and costs
// nobody but itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/sound/HostileFiles.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::size_t kFrames = 9600;

class HostileFiles : public ::testing::Test {
  protected:
    /// Frames heard of it at 48 kHz; 0 for a file that is refused.
    std::size_t Heard(const std::string& name, const std::string& bytes) {
        const Samples sound = DecodeWhole(folder_.Write(name, bytes));
        EXPECT_LE(Peak(sound), 1.0f);
        return sound.size() / kChannels;
    }

    ScratchFolder folder_;
};

TEST_F(HostileFiles, AnyMaskOfChannelsPlays) {
    for (const std::int64_t mask :
         {0x0LL, 0x1LL, 0x3LL, 0x30LL, 0x60LL, 0x600LL, 0x80000000LL, 0xFFFFFFFFLL}) {
        SCOPED_TRACE(mask);
        const Samples sound = DecodeWhole(folder_.Write("mask.wav", Wav({.mask = mask}, kFrames)));
        ASSERT_EQ(sound.size(), kFrames * kChannels);
        EXPECT_GT(Peak(sound), 0.1f);
    }
}

TEST_F(HostileFiles, AnyNumberOfChannelsPlaysUpToSixtyFour) {
    for (const std::uint16_t channels : {1, 2, 3, 5, 7, 9, 12, 16, 24, 33, 63, 64}) {
        SCOPED_TRACE(channels);
        EXPECT_EQ(Heard("many.wav", Wav({.channels = channels}, kFrames)), kFrames);
    }
    for (const std::uint16_t channels : {0, 65, 255, 65535})
        EXPECT_EQ(Heard("many.wav", Wav({.channels = channels}, 100)), 0u) << channels;
}

TEST_F(HostileFiles, RatesOfSoundsPlayAndOthersAreRefused) {
    for (const std::uint32_t rate : {100u, 1000u, 8000u, 768'000u, 2'822'400u, 6'000'000u}) {
        const double seconds = static_cast<double>(kFrames) / rate;
        EXPECT_NEAR(static_cast<double>(Heard("rate.wav", Wav({.rate = rate}, kFrames))),
                    seconds * kSampleRate, 1)
            << rate;
    }
    for (const std::uint32_t rate : {0u, 1u, 50u, 10'000'000u, 1'280'000'000u, 0xFFFFFFFFu})
        EXPECT_EQ(Heard("rate.wav", Wav({.rate = rate}, kFrames)), 0u) << rate;
}

TEST_F(HostileFiles, FormsThatChangeUnderWayPlayToTheirEnds) {
    const auto seconds = [&](const char* name, int rate, int channels) {
        const auto file = folder_ / name;
        const auto frames = static_cast<std::size_t>(2 * rate);
        Encode(file, Sine(1000, frames, 0.5f, rate, channels), rate, channels);
        return ReadBytes(file);
    };
    const struct {
        std::string name;
        std::string bytes;
    } cases[] = {
        {"joined.mp3", seconds("a.mp3", 44100, 2) + seconds("b.mp3", 22050, 1) + seconds("a.mp3", 44100, 2)},
        {"chained.ogg", seconds("a.ogg", 44100, 1) + seconds("b.ogg", 22050, 2) + seconds("c.ogg", 48000, 6)},
    };
    for (const auto& [name, bytes] : cases)
        EXPECT_NEAR(static_cast<double>(Heard(name, bytes)), 6 * kSampleRate, kSampleRate / 4) << name;
    EXPECT_EQ(Heard("long.wav", Wav({.statedBytes = 0xFFFFFFFF}, kFrames)), kFrames);
}

TEST_F(HostileFiles, OneThatEndsItsDecoderCostsItselfAlone) {
    WriteSound(folder_ / "good.wav", Constant(0.25f, kFrames));
    const struct {
        const char* name;
        std::string bytes;
    } cases[] = {{"atoms.m4a", NestedAtoms(60'000)}, {"chapters.mp3", NestedChapters(20'000)}};
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        MixingEngine engine(MixingMode::Offline);
        const auto good = engine.Open(folder_ / "good.wav");
        ASSERT_NE(good, nullptr);
        const auto file = folder_.Write(name, bytes);
        EXPECT_EQ(engine.ReadTags(file), std::nullopt);
        auto failures = engine.TakeFailures();
        ASSERT_THAT(failures, SizeIs(1));
        EXPECT_EQ(failures[0].file, file);
        EXPECT_NE(failures[0].why, "");

        // Neither tried nor told of a second time.
        EXPECT_EQ(engine.ReadTags(file), std::nullopt);
        EXPECT_EQ(engine.Open(file), nullptr);
        EXPECT_THAT(engine.TakeFailures(), IsEmpty());
        engine.ForgetBadFiles();
        EXPECT_EQ(engine.ReadTags(file), std::nullopt);
        EXPECT_THAT(engine.TakeFailures(), SizeIs(1));

        good->Start();
        Mix(engine, kFrames);
        EXPECT_EQ(good->Position(), Frames{kFrames}) << "the sound beside it goes on";
        // A file of that name with other content is another file.
        folder_.Write(name, Wav({}, kFrames));
        EXPECT_NE(engine.Open(file), nullptr);
    }
}

}  // namespace
}  // namespace sorakaze::sound::testing
