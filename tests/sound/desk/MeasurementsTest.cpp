// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What is known of files after it was asked for, and after they have changed.
#include <gtest/gtest.h>

#include <thread>

#include "sound/desk/Measurements.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

constexpr Frames kPart{10 * kSampleRate}, kMore{30 * kSampleRate};
constexpr std::chrono::hours kLong{1};

class MeasurementsTest : public ::testing::Test {
  protected:
    std::filesystem::path Write(const std::string& name, int seconds, float level = 0.1f) {
        WriteSound(folder_ / name, Sine(1000, static_cast<std::size_t>(seconds) * kSampleRate, level));
        return folder_ / name;
    }
    std::optional<Measurement> WantAndAwait(const std::filesystem::path& file, Frames part) {
        measurements_.Want(file, part, {});
        return measurements_.Await(file, part, {}, kLong);
    }

    const ScratchFolder folder_;
    const std::shared_ptr<Decoders> decoders_ = Decoders::Shared();
    Measurements measurements_{decoders_, Decoders::Priority::Normal};
};

TEST_F(MeasurementsTest, WhatIsWantedBecomesKnownAsFarAsItIsWanted) {
    const auto file = Write("long.wav", 60), brief = Write("brief.wav", 3);
    EXPECT_EQ(measurements_.Await(file, kPart, {}, kLong), std::nullopt) << "not wanted";
    const auto known = WantAndAwait(file, kPart);
    ASSERT_TRUE(known);
    EXPECT_NEAR(known->seconds.back().part, -20, 0.1);
    EXPECT_FALSE(known->isWhole);
    EXPECT_EQ(measurements_.Find(file, {}), known) << "on the air less than is wanted will do";
    EXPECT_EQ(measurements_.Find(file, {.skipHead = true}), std::nullopt) << "measured otherwise";
    EXPECT_EQ(measurements_.Await(file, kMore, {}, kLong), std::nullopt);
    const auto more = WantAndAwait(file, kMore);
    ASSERT_TRUE(more);
    EXPECT_GE(more->length, kMore);
    EXPECT_EQ(WantAndAwait(file, kPart), more);

    ASSERT_TRUE(WantAndAwait(brief, kPart));
    EXPECT_TRUE(measurements_.Await(brief, kMore, {}, kLong)) << "there is no more of it";
    Write("brief.wav", 4);
    EXPECT_EQ(measurements_.Find(brief, {}), std::nullopt) << "another file";
}

TEST_F(MeasurementsTest, WhatCannotBeMeasuredKeepsNobodyWaiting) {
    for (const auto& file : {folder_.Write("text.mp3", "no sound"), folder_.Write("empty.mp3", ""),
                             folder_ / "missing.mp3", folder_.Path()})
        EXPECT_EQ(WantAndAwait(file, kPart), std::nullopt) << file;
    EXPECT_TRUE(WantAndAwait(Write("good.wav", 2), kPart));
    EXPECT_TRUE(decoders_->TakeFailures().empty());
}

TEST_F(MeasurementsTest, ShortSoundsAreMeasuredOnce) {
    // A file that seems to be the same shows what is remembered.
    const auto loudness = [&](float level) {
        const auto file = folder_ / "jingle.wav";
        std::filesystem::copy_file(Write("source.wav", 2, level), file,
                                   std::filesystem::copy_options::overwrite_existing);
        std::filesystem::last_write_time(file, std::filesystem::file_time_type{});
        const auto measured = measurements_.MeasureNow(file, {}, kMore);
        return measured ? static_cast<double>(measured->seconds.back().part) : 0;
    };
    EXPECT_NEAR(loudness(0.01f), -40, 0.1);
    EXPECT_NEAR(loudness(0.1f), -40, 0.1);
    EXPECT_EQ(measurements_.MeasureNow(folder_ / "missing.wav", {}, kMore), std::nullopt);
}

TEST_F(MeasurementsTest, ManyThreadsWantManyFiles) {
    std::vector<std::filesystem::path> files;
    for (int i = 0; i < 6; ++i) files.push_back(Write(std::to_string(i) + ".wav", 1));
    {
        std::vector<std::jthread> threads;
        for (std::size_t thread = 0; thread < 3; ++thread)
            threads.emplace_back([&, thread] {
                for (std::size_t i = 0; i < 2 * files.size(); ++i) {
                    const auto& file = files[(i * (thread + 1)) % files.size()];
                    EXPECT_TRUE(i % 3 != 0 || measurements_.MeasureNow(file, {}, kPart));
                    measurements_.Want(file, kPart, {});
                    measurements_.Find(file, {});
                }
            });
    }
    for (const auto& file : files) EXPECT_TRUE(WantAndAwait(file, kPart)) << file;
}

}  // namespace
}  // namespace sorakaze::sound::testing
