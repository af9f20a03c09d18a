// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Sound files as they are written: whole, the same every time, and nothing left behind when something fails.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "app/runtime/sound/SoundFileWriter.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

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
