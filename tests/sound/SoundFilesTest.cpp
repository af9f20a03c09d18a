// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What comes out of files: their length to the frame, their level and their purity, and nothing out of what
// is no sound.
#include <gtest/gtest.h>
#include <mp4file.h>
#include <mp4tag.h>
#include <sys/stat.h>

#include <atomic>
#include <limits>
#include <map>
#include <random>
#include <thread>

#include "base/RegularFile.h"
#include "sound/decoding/Decoder.h"
#include "sound/encoding/WavHeader.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

/// The formats that a show can be written in are read again below.
TEST(Decoding, KeepsLengthLevelAndPurity) {
    const struct {
        const char* name;
        const char* ending;
        const char* options;
        int rate;
        int channels;
        std::size_t frames;
        double purity;     ///< decibels
        double slack = 0;  ///< frames more or less, where the container doesn't state the length
    } cases[] = {
        {"44.1 kHz wav", "wav", "-c:a pcm_s24le", 44100, 2, 100003, 95},
        {"8 kHz mono", "wav", "-c:a pcm_f32le", 8000, 1, 20001, 80},
        {"11.025 kHz 8-bit", "wav", "-c:a pcm_u8", 11025, 1, 20000, 40},
        {"96 kHz flac", "flac", "-sample_fmt s32", 96000, 2, 200001, 95},
        {"192 kHz mono wav", "wav", "-c:a pcm_s32le", 192000, 1, 200003, 95},
        {"alac", "m4a", "-c:a alac", 44100, 2, 50001, 85},
        {"mp3 with a cover", "mp3",
         "-f lavfi -i color=s=64x64:r=1:d=1 -map 0 -map 1 -frames:v 1 -c:v png -disposition:v attached_pic "
         "-q:a 2",
         44100, 2, 100003, 45},
        {"mp3 without an info header", "mp3", "-q:a 2 -write_xing 0", 44100, 2, 100003, 45, 4000},
        {"aac", "m4a", "-c:a aac -b:a 192k -movie_timescale 44100", 44100, 2, 100003, 45},
        {"5.1, all channels equal", "flac", "", 48000, 6, 50000, 85},
        {"sixteen channels", "wav", "-c:a pcm_f32le", 48000, 16, 50000, 85},
    };
    const ScratchFolder folder;
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const auto file = folder / (std::string("tone.") + each.ending);
        Encode(file, Sine(1000, each.frames, 0.5f, each.rate, each.channels), each.rate, each.channels,
               each.options);
        const Samples sound = DecodeWhole(file);
        const std::size_t frames = sound.size() / kChannels;
        EXPECT_NEAR(static_cast<double>(frames),
                    std::round(static_cast<double>(each.frames) * kSampleRate / each.rate), each.slack);
        // Away from ramps and edges, in whole periods.
        const auto middle =
            std::span(sound).subspan(frames / 4 * kChannels, frames / 2 / 48 * 48 * kChannels);
        for (const int channel : {0, 1}) {
            const Tone tone = MeasureTone(Channel(middle, channel), 1000);
            EXPECT_NEAR(tone.amplitude, 0.5, 0.005);
            EXPECT_GT(tone.purity, each.purity);
        }
    }
}

/// Of the decoder by itself, with as many threads helping it as given.
Samples ReadWith(const std::filesystem::path& file, unsigned helpers) {
    const auto decoder = Decoder::Open(InputFile::Adopt(std::move(OpenNonEmptyFile(file)->descriptor)),
                                       file.filename().string(), helpers);
    Samples all, block(2 * 5000);
    for (std::size_t frames = 1; frames > 0;) {
        frames = decoder->Read(block);
        all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(frames * kChannels));
    }
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
        const Samples expected = ReadWith(file, 0);
        EXPECT_GT(expected.size(), sound.size() * 9 / 10);
        EXPECT_EQ(ReadWith(file, 1), expected);
        EXPECT_EQ(ReadWith(file, 3), expected);
    }
}

TEST(Decoding, BelievesTheTagThatStatesTheLengthOnlyWhereItCanBeTrue) {
    const ScratchFolder folder;
    const auto file = folder / "tagged.m4a";
    Encode(file, Sine(1000, 100'003, 0.5f, 44100), 44100, 2, "-c:a aac -use_editlist 0");
    const std::pair<const char*, std::size_t> cases[] = {
        {"0000000000018641", 108740}, {"0000000000008641", 108847}, {"FFFFFFFFFFFFFFFFF", 108847}};
    for (const auto& [samples, frames] : cases) {
        {
            TagLib::MP4::File tags(file.c_str());
            const auto value = std::string(" 00000000 00000400 0000015D ") + samples + " 00000000 00000000";
            tags.tag()->setItem("----:com.apple.iTunes:iTunSMPB", TagLib::StringList(TagLib::String(value)));
            ASSERT_TRUE(tags.save());
        }
        EXPECT_EQ(DecodeWhole(file).size() / kChannels, frames) << samples;
    }
}

TEST(Decoding, RefusesWhatIsNoSound) {
    const ScratchFolder folder;
    WriteSound(folder / "real.wav", Constant(0.1f, 4800));
    std::filesystem::create_symlink("real.wav", folder / "link.wav");
    std::filesystem::create_symlink("nowhere.wav", folder / "dangling.wav");
    std::filesystem::create_directory(folder / "folder.wav");
    ASSERT_EQ(mkfifo((folder / "fifo.wav").c_str(), 0600), 0);
    Encode(folder / "picture.png", Samples(2), 48000, 2,
           "-f lavfi -i color=s=64x64:r=1:d=1 -map 1 -frames:v 1");
    const auto header = WavHeader(0);
    std::mt19937 random(2);
    std::string noise(100'000, '\0');
    for (char& byte : noise) byte = static_cast<char>(random());
    const std::pair<const char*, std::string> files[] = {
        {"empty.wav", ""},
        {"text.mp3", "This is no sound, whatever its name says.\n"},
        {"list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nreal.wav\n#EXT-X-ENDLIST\n"},
        {"list.ffconcat", "ffconcat version 1.0\nfile real.wav\n"},
        {"header.wav", {header.data(), header.size()}},
        {"noise.wav", noise}};
    MixingEngine engine(MixingMode::Offline);
    for (const auto& [name, bytes] : files)
        EXPECT_EQ(engine.Open(folder.Write(name, bytes)), nullptr) << name;
    for (const char* name : {"dangling.wav", "folder.wav", "fifo.wav", "picture.png", "/dev/zero"})
        EXPECT_EQ(engine.Open(folder / name), nullptr) << name;
    EXPECT_NE(engine.Open(folder / "link.wav"), nullptr);
}

TEST(Decoding, PlaysWhatItCanOfADamagedFile) {
    const ScratchFolder folder;
    std::mt19937 random(3);
    constexpr std::size_t kWhole = 10u * kSampleRate * kChannels;
    Samples noise(kWhole);
    for (float& sample : noise) sample = static_cast<float>(random() % 1000) / 1000 - 0.5f;
    for (const std::string ending : {"mp3", "flac", "ogg", "m4a", "wav"}) {
        SCOPED_TRACE(ending);
        const auto file = folder / ("sound." + ending);
        Encode(file, noise, kSampleRate, 2, ending == "m4a" ? "-movflags faststart" : "");
        const std::string whole = ReadBytes(file);

        std::string holed = whole;
        for (std::size_t i = whole.size() * 4 / 10; i < whole.size() * 5 / 10; ++i)
            holed[i] = static_cast<char>(random());
        folder.Write(file, holed);
        EXPECT_GT(DecodeWhole(file).size(), kWhole * 3 / 4);

        folder.Write(file, whole.substr(0, whole.size() * 6 / 10));
        const std::size_t cut = DecodeWhole(file).size();
        EXPECT_GT(cut, kWhole / 2);
        EXPECT_LT(cut, kWhole);
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
    folder.Write("long.wav", {header.data(), header.size()});
    std::filesystem::resize_file(folder / "long.wav", kWavHeaderBytes + kBytes);  // takes no room on the disk
    MixingEngine engine(MixingMode::Offline);
    const auto voice = engine.Open(folder / "long.wav");
    ASSERT_NE(voice, nullptr);
    EXPECT_EQ(voice->Length(), Frames{kBytes / 4});
}

TEST(SoundFileWriter, EveryFormatKeepsLengthAndSound) {
    const std::map<std::string, double> purities{{".wav", 85}, {".flac", 85}, {".aiff", 85}, {".opus", 40},
                                                 {".ogg", 40}, {".mp3", 45},  {".m4a", 45},  {".oga", 40}};
    const ScratchFolder folder;
    const Samples tone = Sine(1000, 100'003, 0.5f);
    for (const auto& ending : SoundFileWriter::Endings()) {
        SCOPED_TRACE(ending);
        const auto file = folder / ("tone" + ending), again = folder / ("again" + ending);
        WriteSound(again, tone);
        const auto writer = SoundFileWriter::Create(file);
        // In uneven pieces, which the encoder's frames must not show.
        for (std::span<const float> rest = tone; !rest.empty();) {
            const std::size_t count = std::min<std::size_t>(rest.size(), 2 * 777);
            writer->Write(rest.first(count));
            rest = rest.subspan(count);
        }
        writer->Finish();
        EXPECT_EQ(ReadBytes(file), ReadBytes(again));
        const Samples back = DecodeWhole(file);
        ASSERT_EQ(back.size(), tone.size());
        const Tone left = MeasureTone(Channel(std::span(back).subspan(2 * 24'000, 2 * 48'000), 0), 1000);
        EXPECT_NEAR(left.amplitude, 0.5, 0.005);
        EXPECT_GT(left.purity, purities.at(ending));
    }
}

TEST(SoundFileWriter, RoundsAndHoldsSamplesToTheRange) {
    const ScratchFolder folder;
    constexpr float kUnit = 1.0f / 32768;
    const Samples given{0.4f * kUnit, 0.6f * kUnit, -0.6f * kUnit, 2.0f, -2.0f, 1.0f, -1.0f, std::nanf("")};
    const std::int16_t expected[] = {0, 1, -1, 32767, -32768, 32767, -32768, 0};
    WriteSound(folder / "edge.wav", given);
    EXPECT_TRUE(ReadBytes(folder / "edge.wav")
                    .ends_with({reinterpret_cast<const char*>(expected), sizeof(expected)}));
}

TEST(SoundFileWriter, TakesTheOldFilesPlaceOnlyWhenWhole) {
    const ScratchFolder folder;
    const auto file = folder.Write("real.wav", "old");
    std::filesystem::create_symlink("real.wav", folder / "link.wav");
    std::filesystem::create_directory(folder / "folder.wav");
    for (const char* name : {"real.wav", "link.wav", "new.mp3"})
        SoundFileWriter::Create(folder / name)->Write(Constant(0.1f, 48000));
    for (const auto& wrong :
         {folder / "show.xyz", folder / "show", folder / "no/folder/show.wav", folder / "folder.wav",
          folder / (std::string(300, 'x') + ".wav"), std::filesystem::path("/proc/show.wav")})
        EXPECT_THROW(SoundFileWriter::Create(wrong), SoundFileError) << wrong;
    EXPECT_EQ(ReadBytes(file), "old") << "unfinished";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 3) << "nothing is left";
    WriteSound(folder / "link.wav", Constant(0.1f, 480));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.wav"));
    EXPECT_EQ(DecodeWhole(file).size(), 960u);
}

}  // namespace
}  // namespace sorakaze::sound::testing
