// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The frames that a file is played as, with and without the options that decide on them, and that measuring
// it in a decoder's process has exactly those.
#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "sound/MixingThread.h"
#include "sound/measuring/Measurer.h"
#include "tests/sound/HostileFiles.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

constexpr DecodeOptions kPlain, kSkip{.skipHead = true, .fullFold = false},
    kFull{.skipHead = false, .fullFold = true};
constexpr std::size_t kLead = kSampleRate / 50;

class DecodeOptionsTest : public ::testing::Test {
  protected:
    /// The frames of a file, as the mixing thread gets them. Fails where they don't come to their end.
    Samples Played(const std::filesystem::path& file, const DecodeOptions& options) {
        const auto sound = decoders_->Open(file, Decoders::Pace::Fast, options);
        if (!sound) return {};
        Samples all;
        const MixingScope scope(mixing_);
        while (!sound->Ring().IsDrained()) {
            sound->WaitForFrames();
            const auto frames = sound->Ring().Peek(RingReader::kMostFrames);
            all.insert(all.end(), frames.begin(), frames.end());
            sound->Ring().Consume(frames.size() / kChannels);
            sound->WakeDecoder();
        }
        EXPECT_TRUE(sound->Ring().IsComplete());
        return all;
    }
    std::optional<Measurement> Measured(const std::filesystem::path& file, const DecodeOptions& options,
                                        Frames limit = kLongestMeasurement) {
        return decoders_->Measure(file, limit, options, Decoders::Priority::Background);
    }

    const ScratchFolder folder_;
    const std::shared_ptr<Decoders> decoders_ = Decoders::Shared();
    std::atomic_flag mixing_;
};

TEST_F(DecodeOptionsTest, SilenceAtTheHeadIsLeftOutAndNothingElse) {
    Samples sound = Constant(0.25f, 3 * kSampleRate);
    std::fill_n(sound.begin() + kSampleRate, kSampleRate, 0.0f);  // a pause is kept
    for (const std::size_t silence : {0u, 500u, 960u, 961u, 32'768u, 65u * kSampleRate}) {
        SCOPED_TRACE(silence);
        Samples whole(silence * kChannels, 0.0005f);
        whole.insert(whole.end(), sound.begin(), sound.end());
        Encode(folder_ / "sound.wav", whole, kSampleRate, kChannels, "-c:a pcm_f32le");
        const std::size_t cut = silence - std::min(silence, kLead);
        const Samples played = Played(folder_ / "sound.wav", kSkip);
        EXPECT_EQ(played, Samples(whole.begin() + static_cast<std::ptrdiff_t>(cut * kChannels), whole.end()));
        EXPECT_EQ(Played(folder_ / "sound.wav", kPlain), whole);
        const auto voice = decoders_->Open(folder_ / "sound.wav", Decoders::Pace::Device, kSkip);
        ASSERT_NE(voice, nullptr);
        // The longest isn't passed over yet when the answer comes.
        const std::int64_t unknown = silence > 60u * kSampleRate ? 6 * kSampleRate : 0;
        EXPECT_NEAR(static_cast<double>(voice->Length()->count),
                    static_cast<double>(std::ssize(played) / kChannels), static_cast<double>(unknown));
    }
}

TEST_F(DecodeOptionsTest, ExcerptsAreTheFramesOfTheWholeFile) {
    constexpr std::int64_t kCdFrame = kSampleRate / 75;
    constexpr std::size_t kLength = 20 * kSampleRate;
    Samples music(kLength * kChannels);
    std::mt19937 random(7);
    float low = 0;
    for (float& sample : music)
        sample = low = 0.95f * low + 0.05f * (static_cast<float>(random() % 2000) / 1000 - 1);
    const struct {
        const char* name;
        int rate;
        const char* options;
        float tolerance;  ///< of decoders with a memory
    } formats[] = {
        {"a.wav", 48000, "", 0},
        {"a.flac", 48000, "", 0},
        {"b.flac", 44100, "", 1e-4f},
        {"a.wv", 48000, "", 0},
        {"cbr.mp3", 48000, "-b:a 128k", 1e-4f},
        {"vbr.mp3", 48000, "-q:a 4", 1e-4f},
        {"a.ogg", 48000, "", 1e-4f},
        {"a.opus", 48000, "", 0.02f},
        {"a.m4a", 48000, "-c:a aac -aac_pns 0", 1e-4f},
        {"alac.m4a", 48000, "-c:a alac", 0},
        {"a.aac", 48000, "-aac_pns 0", 1e-4f},
    };
    for (const auto& format : formats) {
        Encode(folder_ / format.name, music, format.rate, kChannels, format.options);
        const Samples whole = Played(folder_ / format.name, kPlain);
        for (const std::int64_t start : {2 * kCdFrame, 232 * kCdFrame, 1125 * kCdFrame}) {
            SCOPED_TRACE(std::string(format.name) + " from " + std::to_string(start));
            const Frames length{start == 2 * kCdFrame ? 2 * kSampleRate : 0};
            const Samples part = Played(folder_ / format.name,
                                        {.skipHead = false, .fullFold = false, .excerpt = {{start}, length}});
            const auto begin = static_cast<std::size_t>(start) * kChannels;
            const std::size_t most =
                length.count > 0 ? static_cast<std::size_t>(length.count) * kChannels : whole.size() - begin;
            ASSERT_NEAR(static_cast<double>(part.size()), static_cast<double>(most),
                        format.rate == 44100 ? 4 : 0);
            float worst = 0;
            for (std::size_t i = 100; i + 100 < std::min(part.size(), most); ++i)
                worst = std::max(worst, std::fabs(part[i] - whole[begin + i]));
            EXPECT_LE(worst, format.tolerance);
        }
        EXPECT_EQ(
            decoders_->Open(folder_ / format.name, Decoders::Pace::Fast,
                            {.skipHead = false, .fullFold = false, .excerpt = {{60 * kSampleRate}, {}}}),
            nullptr)
            << format.name;
    }
}

TEST_F(DecodeOptionsTest, MeasuringHasTheFramesThatArePlayed) {
    std::mt19937 random(5);
    Samples noise(5 * kSampleRate * kChannels), poison = Constant(0.25f, 3 * kSampleRate);
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = i < noise.size() / 4 ? 0.0f : static_cast<float>(random() % 1000) / 1000 - 0.5f;
    for (std::size_t i = 20'000; i < 90'000; i += 4) {
        poison[i] = std::numeric_limits<float>::quiet_NaN();
        poison[i + 1] = -std::numeric_limits<float>::infinity();
        poison[i + 2] = 1e30f;
    }
    const Samples silence = Constant(0.0f, 3 * kSampleRate);
    Encode(folder_ / "noise.mp3", noise, kSampleRate, kChannels);
    Encode(folder_ / "noise.ogg", noise, 44100, kChannels);
    Encode(folder_ / "surround.flac", noise, kSampleRate, 6);
    Encode(folder_ / "poison.wav", poison, kSampleRate, kChannels, "-c:a pcm_f32le");
    Encode(folder_ / "nothing but poison.wav", Samples(kSampleRate, HUGE_VALF), kSampleRate, 1,
           "-c:a pcm_f32le");
    Encode(folder_ / "silence.flac", silence, kSampleRate, kChannels);
    folder_.Write("one frame.wav", Wav({}, 1));
    folder_.Write("five hours.wav", Wav({.statedBytes = 5ull * 3600 * kSampleRate * 4}, 100'000));
    int silent = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
        for (const DecodeOptions& options : {kPlain, kSkip, kFull}) {
            SCOPED_TRACE(entry.path().filename());
            Measurer expected(kLongestMeasurement);
            expected.Add(Played(entry.path(), options));
            const auto measured = Measured(entry.path(), options);
            ASSERT_TRUE(measured);
            EXPECT_EQ(measured, expected.Finish(true));
            EXPECT_EQ(measured, decoders_->Measure(entry.path(), kLongestMeasurement, options,
                                                   Decoders::Priority::Normal));
            silent += measured->length == Frames{};
        }
    }
    EXPECT_EQ(silent, 2) << "without frames when their head is skipped";
    const auto begun = Measured(folder_ / "noise.mp3", kSkip, {kSampleRate * 3 / 2});
    ASSERT_TRUE(begun);
    EXPECT_EQ(begun->length, Frames{kSampleRate * 3 / 2});
    EXPECT_FALSE(begun->isWhole);
    for (const std::string text : {"", "no sound"})
        EXPECT_EQ(Measured(folder_.Write("text.mp3", text), kPlain), std::nullopt);
    EXPECT_EQ(Measured(folder_ / "missing.mp3", kPlain), std::nullopt);
    EXPECT_TRUE(decoders_->TakeFailures().empty());
}

TEST_F(DecodeOptionsTest, SurroundIsFoldedAtItsLevel) {
    constexpr std::size_t kFrames = 4800, kSix = 6;
    // Left, right, centre, low frequencies, and the two at the back.
    const struct {
        std::size_t channel;
        float full;
    } cases[] = {{0, 0.5f}, {2, 0.3535f}, {4, 0.3535f}};
    for (const auto& [channel, full] : cases) {
        Samples sound(kFrames * kSix);
        for (std::size_t i = channel; i < sound.size(); i += kSix) sound[i] = 0.5f;
        Encode(folder_ / "six.wav", sound, kSampleRate, kSix, "-c:a pcm_f32le");
        EXPECT_NEAR(Played(folder_ / "six.wav", kFull)[kFrames], full, 0.001) << channel;
        EXPECT_NEAR(Played(folder_ / "six.wav", kPlain)[kFrames], full / 2.414f, 0.001) << channel;
    }
    const Samples loud(kFrames * kSix, 1.0f);
    Encode(folder_ / "loud.wav", loud, kSampleRate, kSix, "-c:a pcm_f32le");
    EXPECT_NEAR(Peak(Played(folder_ / "loud.wav", kFull)), 2.414f, 0.001);
    EXPECT_LE(Peak(Played(folder_ / "loud.wav", kPlain)), 1.0f);
    Encode(folder_ / "mono.wav", Samples(kFrames, 0.5f), kSampleRate, 1, "-c:a pcm_f32le");
    EXPECT_EQ(Played(folder_ / "mono.wav", kFull), Constant(0.5f, kFrames));
}

}  // namespace
}  // namespace sorakaze::sound::testing
