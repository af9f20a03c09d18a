// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Sound files as they are written: whole, the same every time, and nothing left behind when something fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <map>

#include "app/runtime/sound/SoundFileWriter.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

std::size_t Entries(const ScratchFolder& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

std::string ErrorOf(const std::filesystem::path& file) {
    try {
        SoundFileWriter::Create(file);
    } catch (const SoundFileError& error) {
        EXPECT_THAT(error.what(), HasSubstr(file.string()));
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        return error.what();
    }
    return "no error";
}

TEST(SoundFileWriter, EveryFormatKeepsLengthAndSound) {
    const std::map<std::string, double> purities{{".wav", 85}, {".flac", 85}, {".aiff", 85}, {".opus", 40},
                                                 {".ogg", 40}, {".mp3", 45},  {".m4a", 45},  {".oga", 40}};
    const ScratchFolder folder;
    const Samples tone = Sine(1000, 100'003, 0.5f);
    for (const auto& ending : SoundFileWriter::Endings()) {
        SCOPED_TRACE(ending);
        const auto writer = SoundFileWriter::Create(folder / ("tone" + ending));
        // In uneven pieces, which the encoder's frames must not show.
        for (std::span<const float> rest = tone; !rest.empty();) {
            const std::size_t count = std::min<std::size_t>(rest.size(), 2 * 777);
            writer->Write(rest.first(count));
            rest = rest.subspan(count);
        }
        writer->Finish();
        const Samples back = DecodeWhole(folder / ("tone" + ending));
        ASSERT_EQ(back.size(), tone.size());
        const Tone left = MeasureTone(Channel(std::span(back).subspan(2 * 24'000, 2 * 48'000), 0), 1000);
        EXPECT_NEAR(left.amplitude, 0.5, 0.005);
        EXPECT_GT(left.purity, purities.at(ending));

        WriteSound(folder / ("again" + ending), tone);
        EXPECT_EQ(ReadBytes(folder / ("tone" + ending)), ReadBytes(folder / ("again" + ending)));
    }
}

TEST(SoundFileWriter, RoundsAndHoldsSamplesToTheRange) {
    const ScratchFolder folder;
    constexpr float kUnit = 1.0f / 32768;
    const Samples given{0.4f * kUnit, 0.6f * kUnit, -0.6f * kUnit, 2.0f, -2.0f, 1.0f, -1.0f, std::nanf("")};
    const std::vector<std::int16_t> expected{0, 1, -1, 32767, -32768, 32767, -32768, 0};
    WriteSound(folder / "edge.wav", given);
    const std::string bytes = ReadBytes(folder / "edge.wav");
    std::vector<std::int16_t> written(given.size());
    const std::size_t size = written.size() * sizeof(std::int16_t);
    ASSERT_GT(bytes.size(), size);
    bytes.copy(reinterpret_cast<char*>(written.data()), size, bytes.size() - size);
    EXPECT_EQ(written, expected);
}

TEST(SoundFileWriter, TakesTheOldFilesPlaceOnlyWhenWhole) {
    const ScratchFolder folder;
    for (const char* name : {"show.wav", "show.mp3"}) {
        const auto file = folder / name;
        WriteBytes(file, "old");
        {
            const auto writer = SoundFileWriter::Create(file);
            writer->Write(Constant(0.1f, 48000));
            EXPECT_EQ(ReadBytes(file), "old");
        }
        EXPECT_EQ(ReadBytes(file), "old") << "unfinished";
        std::filesystem::remove(file);
    }
    EXPECT_EQ(Entries(folder), 0u) << "unfinished files are removed";

    WriteBytes(folder / "real.wav", "old");
    std::filesystem::create_symlink("real.wav", folder / "link.wav");
    WriteSound(folder / "link.wav", Constant(0.1f, 480));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.wav"));
    EXPECT_EQ(DecodeWhole(folder / "real.wav").size(), 960u);
}

TEST(SoundFileWriter, SaysWhatToDoWhereNothingCanBeWritten) {
    const ScratchFolder folder;
    std::filesystem::create_directory(folder / "folder.wav");
    EXPECT_THAT(ErrorOf(folder / "show.xyz"), AllOf(HasSubstr(".wav, .flac"), HasSubstr(".mp3")));
    EXPECT_THAT(ErrorOf(folder / "show"), HasSubstr(".wav"));
    EXPECT_THAT(ErrorOf(folder / "no/folder/show.wav"), AllOf(HasSubstr("no folder"), HasSubstr("Make it")));
    EXPECT_THAT(ErrorOf(folder / "folder.wav"), HasSubstr("another name"));
    EXPECT_THAT(ErrorOf(folder / (std::string(300, 'x') + ".wav")), HasSubstr("too long"));
    EXPECT_THAT(ErrorOf("/proc/show.wav"), HasSubstr("another place"));
    EXPECT_EQ(ErrorOf(folder / "SHOW.WAV"), "no error");
    EXPECT_EQ(Entries(folder), 1u);
}

/// While it lives, files of this process end at `bytes`, as on a disk that is full.
class SmallFiles {
  public:
    explicit SmallFiles(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFiles() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

  private:
    void (*handler_)(int);
    rlimit before_{};
};

TEST(SoundFileWriter, ReportsAFullDiskAndRemovesThePart) {
    for (const auto& ending : SoundFileWriter::Endings()) {
        SCOPED_TRACE(ending);
        const ScratchFolder folder;
        std::string message;
        {
            const SmallFiles limit(20'000);
            const Samples second = Sine(440, kSampleRate, 0.9f);
            try {
                const auto writer = SoundFileWriter::Create(folder / ("show" + ending));
                for (int i = 0; i < 20; ++i) writer->Write(second);
                writer->Finish();
            } catch (const SoundFileError& error) {
                message = error.what();
            }
        }
        EXPECT_THAT(message, HasSubstr("grow larger"));
        EXPECT_EQ(Entries(folder), 0u);
    }
}

}  // namespace
}  // namespace sorakaze::sound::testing
