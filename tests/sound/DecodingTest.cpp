// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What comes out of files: their length to the frame, their level and their purity, and nothing out of what
// is no sound.
#include <gtest/gtest.h>
#include <mp4file.h>
#include <mp4tag.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <thread>

#include "app/runtime/sound/Decoder.h"
#include "app/runtime/sound/WavHeader.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

/// The middle of a sound, away from ramps and edges, in whole periods of a 1000 Hz tone.
Samples Middle(const Samples& samples) {
    const std::size_t frames = samples.size() / kChannels;
    const std::size_t count = frames / 2 / 48 * 48;
    return Samples(samples.begin() + static_cast<std::ptrdiff_t>(frames / 4 * kChannels),
                   samples.begin() + static_cast<std::ptrdiff_t>((frames / 4 + count) * kChannels));
}

struct FormatCase {
    const char* name;
    const char* ending;
    const char* options;
    int rate;
    int channels;
    std::size_t frames;
    double left;    ///< amplitude expected of a tone of 0.5 in every channel
    double purity;  ///< decibels
    int slack = 0;  ///< frames more or less, where the container doesn't state the length
};

TEST(Decoding, KeepsLengthLevelAndPurity) {
    const FormatCase cases[] = {
        {"16-bit wav", "wav", "", 48000, 2, 48123, 0.5, 85},
        {"44.1 kHz wav", "wav", "-c:a pcm_s24le", 44100, 2, 100003, 0.5, 95},
        {"one second of 44.1 kHz", "wav", "-c:a pcm_f32le", 44100, 2, 44100, 0.5, 95},
        {"8 kHz mono", "wav", "-c:a pcm_f32le", 8000, 1, 20001, 0.5, 80},
        {"11.025 kHz 8-bit", "wav", "-c:a pcm_u8", 11025, 1, 20000, 0.5, 40},
        {"96 kHz flac", "flac", "-sample_fmt s32", 96000, 2, 200001, 0.5, 95},
        {"192 kHz mono wav", "wav", "-c:a pcm_s32le", 192000, 1, 200003, 0.5, 95},
        {"alac", "m4a", "-c:a alac", 44100, 2, 50001, 0.5, 85},
        {"aiff", "aiff", "", 22050, 2, 30001, 0.5, 80},
        {"mp3", "mp3", "-q:a 2", 44100, 2, 100003, 0.5, 45},
        {"mp3 without an info header", "mp3", "-q:a 2 -write_xing 0", 44100, 2, 100003, 0.5, 45, 4000},
        {"aac", "m4a", "-c:a aac -b:a 192k -movie_timescale 44100", 44100, 2, 100003, 0.5, 45},
        {"vorbis", "ogg", "-c:a libvorbis -q:a 6", 44100, 2, 100003, 0.5, 40},
        {"opus", "opus", "-b:a 160k", 48000, 2, 100003, 0.5, 40},
        {"5.1, all channels equal", "flac", "", 48000, 6, 50000, 0.5, 85},
        {"sixteen channels", "wav", "-c:a pcm_f32le", 48000, 16, 50000, 0.5, 85},
    };
    const ScratchFolder folder;
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const auto file = folder / (std::string("tone.") + each.ending);
        Encode(file, Sine(1000, each.frames, 0.5f, each.rate, each.channels), each.rate, each.channels,
               each.options);
        const Samples sound = DecodeWhole(file);
        const double frames = static_cast<double>(sound.size() / kChannels);
        EXPECT_NEAR(frames, std::round(static_cast<double>(each.frames) * kSampleRate / each.rate),
                    each.slack);
        const Samples middle = Middle(sound);
        const Tone left = MeasureTone(Channel(middle, 0), 1000);
        const Tone right = MeasureTone(Channel(middle, 1), 1000);
        EXPECT_NEAR(left.amplitude, each.left, 0.005);
        EXPECT_NEAR(right.amplitude, each.left, 0.005);
        EXPECT_GT(left.purity, each.purity);
    }
}

TEST(Decoding, GivesTheSamplesOfA48kHzFileUnchanged) {
    const ScratchFolder folder;
    Samples noise(2 * 70'000);
    std::mt19937 random(1);
    for (float& sample : noise)
        sample = static_cast<float>(static_cast<int>(random() % 65535) - 32767) / 32768.0f;
    WriteSound(folder / "noise.wav", noise);
    const Samples mixed = DecodeWhole(folder / "noise.wav");
    ASSERT_EQ(mixed.size(), noise.size());
    constexpr std::size_t kRampIn = 96 * kChannels;
    EXPECT_TRUE(std::equal(noise.begin() + kRampIn, noise.end(), mixed.begin() + kRampIn));
}

/// Of the decoder by itself, with as many threads helping it as given.
Samples ReadWith(const std::filesystem::path& file, Decoder::Speed speed, int helpers) {
    const auto decoder = Decoder::Open(file, speed);
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < helpers; ++i) {
        threads.emplace_back([&] {
            while (!done) {
                if (decoder->WantsHelp())
                    decoder->Help();
                else
                    std::this_thread::yield();
            }
        });
    }
    Samples all, block(2 * 5000);
    for (std::size_t frames = 1; frames > 0;) {
        frames = decoder->Read(block);
        all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(frames * kChannels));
    }
    done = true;
    for (auto& thread : threads) thread.join();
    return all;
}

TEST(Decoding, IsTheSameWithManyThreadsAsWithOne) {
    const ScratchFolder folder;
    std::mt19937 random(4);
    // Loud and silent stretches: with a variable rate, small packets that reach far back for their bits.
    Samples sound(2 * 44100 * 15);
    for (std::size_t i = 0; i < sound.size(); ++i)
        sound[i] = (i / 30'000) % 3 == 0 ? 0.0f : static_cast<float>(random() % 1000) / 1000 - 0.5f;
    const struct {
        const char* name;
        const char* options;
        int rate;
    } cases[] = {{"low.mp3", "-b:a 32k", 44100}, {"variable.mp3", "-q:a 0", 44100},
                 {"half.mp3", "-b:a 8k", 22050}, {"full.mp3", "-b:a 320k", 48000},
                 {"sound.flac", "", 44100},      {"alac.m4a", "-c:a alac", 44100}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const auto file = folder / each.name;
        Encode(file, sound, each.rate, 2, each.options);
        const Samples expected = ReadWith(file, Decoder::Speed::Modest, 0);
        EXPECT_GT(expected.size(), sound.size() * 9 / 10);
        EXPECT_EQ(ReadWith(file, Decoder::Speed::Highest, 0), expected);
        EXPECT_EQ(ReadWith(file, Decoder::Speed::Highest, 3), expected);
    }
}

TEST(Decoding, BelievesTheTagThatStatesTheLengthOnlyWhereItCanBeTrue) {
    const ScratchFolder folder;
    const auto file = folder / "tagged.m4a";
    Encode(file, Sine(1000, 100'003, 0.5f, 44100), 44100, 2, "-c:a aac -use_editlist 0");
    const struct {
        const char* samples;
        std::size_t frames;
    } cases[] = {{"0000000000018641", 108740}, {"0000000000008641", 108847}, {"FFFFFFFFFFFFFFFFF", 108847}};
    for (const auto& each : cases) {
        {
            TagLib::MP4::File tags(file.c_str());
            const auto value =
                std::string(" 00000000 00000400 0000015D ") + each.samples + " 00000000 00000000";
            tags.tag()->setItem("----:com.apple.iTunes:iTunSMPB", TagLib::StringList(TagLib::String(value)));
            ASSERT_TRUE(tags.save());
        }
        EXPECT_EQ(DecodeWhole(file).size() / kChannels, each.frames) << each.samples;
    }
}

TEST(Decoding, DownmixesWithoutClipping) {
    const ScratchFolder folder;
    Encode(folder / "loud.flac", Sine(1000, 48000, 1.0f, kSampleRate, 6), kSampleRate, 6);
    const Samples mixed = DecodeWhole(folder / "loud.flac");
    EXPECT_LE(Peak(mixed), 1.0f);
    EXPECT_GT(MeasureTone(Channel(Middle(mixed), 0), 1000).purity, 80);
}

TEST(Decoding, PassesOverAttachedPictures) {
    const ScratchFolder folder;
    Encode(folder / "plain.mp3", Sine(1000, 44100, 0.5f, 44100), 44100, 2);
    const std::string command =
        "cd '" + folder.Path().string() +
        "' && ffmpeg -nostdin -v error -f lavfi -i color=red:s=64x64 -frames:v 1 picture.png && "
        "ffmpeg -nostdin -v error -i plain.mp3 -i picture.png -map 0:a -map 1:v -c copy "
        "-disposition:v attached_pic covered.mp3";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(DecodeWhole(folder / "covered.mp3").size(), DecodeWhole(folder / "plain.mp3").size());
    EXPECT_TRUE(DecodeWhole(folder / "picture.png").empty());
}

TEST(Decoding, RefusesWhatIsNoSound) {
    const ScratchFolder folder;
    WriteSound(folder / "real.wav", Constant(0.1f, 4800));
    WriteBytes(folder / "empty.wav", "");
    WriteBytes(folder / "text.mp3", "This is no sound, whatever its name says.\n");
    WriteBytes(folder / "list.m3u8",
               "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nreal.wav\n#EXT-X-ENDLIST\n");
    WriteBytes(folder / "list.ffconcat", "ffconcat version 1.0\nfile real.wav\n");
    const auto header = WavHeader(0);
    WriteBytes(folder / "headeronly.wav", {header.data(), header.size()});
    std::filesystem::create_directory(folder / "folder.wav");
    ASSERT_EQ(mkfifo((folder / "fifo.wav").c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere.wav", folder / "dangling.wav");
    std::filesystem::create_symlink("real.wav", folder / "link.wav");
    std::string noise(100'000, '\0');
    std::mt19937 random(2);
    for (char& byte : noise) byte = static_cast<char>(random());
    WriteBytes(folder / "noise.wav", noise);

    MixingEngine engine(Reading::Offline);
    for (const char* name : {"empty.wav", "text.mp3", "list.m3u8", "list.ffconcat", "headeronly.wav",
                             "folder.wav", "fifo.wav", "dangling.wav", "noise.wav", "missing.wav"})
        EXPECT_EQ(engine.Open(folder / name), nullptr) << name;
    EXPECT_EQ(engine.Open("/dev/zero"), nullptr);
    EXPECT_EQ(engine.Open(""), nullptr);
    EXPECT_NE(engine.Open(folder / "link.wav"), nullptr);
    if (geteuid() != 0) {
        std::filesystem::permissions(folder / "real.wav", std::filesystem::perms::none);
        EXPECT_EQ(engine.Open(folder / "real.wav"), nullptr);
    }
}

TEST(Decoding, PlaysWhatItCanOfADamagedFile) {
    const ScratchFolder folder;
    std::mt19937 random(3);
    for (const char* ending : {"mp3", "flac", "ogg", "m4a", "wav"}) {
        SCOPED_TRACE(ending);
        const auto file = folder / (std::string("sound.") + ending);
        constexpr std::size_t kFrames = 10 * 44100;
        Samples noise(kFrames * kChannels);
        for (float& sample : noise) sample = static_cast<float>(random() % 1000) / 1000 - 0.5f;
        Encode(file, noise, 44100, 2, ending == std::string("m4a") ? "-movflags faststart" : "");
        const std::string whole = ReadBytes(file);

        std::string holed = whole;
        for (std::size_t i = whole.size() * 4 / 10; i < whole.size() * 5 / 10; ++i)
            holed[i] = static_cast<char>(random());
        WriteBytes(file, holed);
        EXPECT_GT(DecodeWhole(file).size(), 10u * kSampleRate * kChannels * 3 / 4);

        WriteBytes(file, std::string_view(whole).substr(0, whole.size() * 6 / 10));
        const std::size_t cut = DecodeWhole(file).size();
        EXPECT_GT(cut, 10u * kSampleRate * kChannels / 2);
        EXPECT_LT(cut, 10u * kSampleRate * kChannels);
    }
}

TEST(Decoding, MakesSilenceOfSamplesThatAreNoNumbers) {
    const ScratchFolder folder;
    Samples poison = Constant(0.25f, 48000);
    for (std::size_t i = 20'000; i < 20'100; i += 4) {
        poison[i] = std::numeric_limits<float>::quiet_NaN();
        poison[i + 1] = -std::numeric_limits<float>::infinity();
        poison[i + 2] = 1e30f;
    }
    Encode(folder / "poison.wav", poison, kSampleRate, 2, "-c:a pcm_f32le");
    const Samples mixed = DecodeWhole(folder / "poison.wav");
    ASSERT_EQ(mixed.size(), poison.size());
    EXPECT_LE(Peak(mixed), 0.25f);
    EXPECT_EQ(mixed.back(), 0.25f);
}

TEST(Decoding, ReadsFilesBeyondFourGigabytes) {
    const ScratchFolder folder;
    constexpr std::uint64_t kBytes = 5'000'000'000;
    const auto header = WavHeader(kBytes);
    WriteBytes(folder / "long.wav", {header.data(), header.size()});
    std::filesystem::resize_file(folder / "long.wav", kWavHeaderBytes + kBytes);  // takes no room on the disk
    MixingEngine engine(Reading::Offline);
    const auto voice = engine.Open(folder / "long.wav");
    ASSERT_NE(voice, nullptr);
    EXPECT_EQ(voice->Length(), Frames{kBytes / 4});
}

}  // namespace
}  // namespace sorakaze::sound::testing
