// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "player/FolderTree.h"
#include "sound/MixingEngine.h"
#include "tests/player/MusicFolder.h"

namespace sorakaze::player {
namespace {

/// Endings, and how ffmpeg writes such a file.
struct {
    const char* endings;
    const char* options;
} const kFormats[] = {
    {"aac ac3 adts adx aif aifc aiff asf ast au avi caf eac3 f4v flac g722 ircam isma latm loas m2a m2t "
     "m2ts m4a m4b m4v mkv mka mov mp2 mp3 mp4 mpa mpeg mpg mts nut oga ogg ogv ra rm sf sox tta ts vob voc "
     "w64 wav wma wmv wtv wv",
     ""},
    {"3g2 3gp 3gpp", "-c:a aac -f 3gp"},
    {"mp1 mpga", "-f mp3"},
    {"m4r qt", "-f mov"},
    {"wave bwf", "-f wav"},
    {"rf64", "-f wav -rf64 always"},
    {"snd", "-f au"},
    {"afc", "-f aiff"},
    {"ec3", "-f eac3"},
    {"ogx", "-f ogg"},
    {"opus webm", "-ar 48000"},
    {"spx", "-ar 16000"},
    {"weba", "-ar 48000 -f webm"},
    {"mk3d", "-f matroska"},
    {"dts", "-strict -2 -c:a dca"},
    {"mlp", "-strict -2 -c:a mlp -ac 2"},
    {"thd", "-strict -2 -c:a truehd -ac 2 -f truehd"},
    {"flv", "-c:a mp3"},
    {"mmf", "-ac 1"},
    {"rso", "-ar 16000 -ac 1"},
    {"sbc", "-ar 16000 -ac 1"},
    {"gsm", "-ar 8000 -ac 1"},
};

std::vector<std::string> EndingsOf(const std::string& endings) {
    std::istringstream words(endings);
    return {std::istream_iterator<std::string>(words), {}};
}

/// Four channels, one pattern, and one sample of a square wave.
std::string Module() {
    std::string module(20 + 31 * 30, '\0');
    module[20 + 23] = 16;  // words of the sample
    module[20 + 25] = 64;  // its volume
    module[20 + 29] = 16;  // words that repeat
    module += std::string("\x01\x7F", 2) + std::string(128, '\0') + "M.K.";
    std::string pattern(64 * 4 * 4, '\0');
    pattern.replace(0, 4, std::string("\x01\x1D\x10\x00", 4));
    return module + pattern + std::string(16, '\x40') + std::string(16, '\xC0');
}

TEST(Endings, OfWhatTheDecoderPlaysAreFound) {
    const MusicFolder folder;
    const auto source = folder.WriteTone("source.wav", 0.6);
    std::string command = "ffmpeg -nostdin -v error -y -i '" + source.string() + "'";
    std::vector<std::filesystem::path> files;
    for (const auto& format : kFormats) {
        for (const std::string& ending : EndingsOf(format.endings)) {
            files.push_back(folder.Path() / ("sound." + ending));
            command += std::string(" -ar 44100 ") + format.options + " '" + files.back().string() + "'";
        }
    }
    ASSERT_EQ(std::system(command.c_str()), 0);
    files.push_back(folder.Write("sound.mod", Module()));
    sound::MixingEngine engine(sound::MixingMode::Offline);
    for (const auto& file : files) {
        EXPECT_TRUE(IsSoundName(file.filename().string())) << file;
        EXPECT_NE(engine.Open(file), nullptr) << file;
    }
    for (const char* other : {"cover.jpg", "notes.txt", "mp3", ".mp3", "disc.cue", "a.swf", "raw.sw"})
        EXPECT_FALSE(IsSoundName(other)) << other;
}

}  // namespace
}  // namespace sorakaze::player
