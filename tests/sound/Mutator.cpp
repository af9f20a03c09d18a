// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/sound/Mutator.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "tests/support/TestRuntime.h"

namespace sorakaze::sound::testing {
namespace {

constexpr const char* kChapters =
    ";FFMETADATA1\ntitle=夜\nartist=歌手\n"
    "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=200\ntitle=A\n"
    "[CHAPTER]\nTIMEBASE=1/1000\nSTART=200\nEND=600\ntitle=B\n";

/// Of the inputs below 0 is sound, 1 moving pictures, 2 the chapters.
constexpr const char* kOutputs[][2] = {
    {"plain.wav", "-map 0"},
    {"extensible.wav", "-map 0 -c:a pcm_s24le -ac 6"},
    {"float.wav", "-map 0 -c:a pcm_f32le"},
    {"plain.aiff", "-map 0 -write_id3v2 1 -map_metadata 2"},
    {"plain.flac", "-map 0 -map_metadata 2"},
    {"cover.mp3",
     "-map 0 -map 1 -frames:v 1 -c:v png -disposition:v attached_pic -map_metadata 2 -id3v2_version 3"},
    {"bare.mp3", "-map 0 -write_xing 0 -id3v2_version 0"},
    {"aac.m4a", "-map 0 -c:a aac -map_metadata 2"},
    {"alac.m4a", "-map 0 -c:a alac"},
    {"raw.aac", "-map 0 -c:a aac -f adts"},
    {"vorbis.ogg", "-map 0 -c:a libvorbis -map_metadata 2"},
    {"plain.opus", "-map 0 -c:a libopus"},
    {"flac.oga", "-map 0 -c:a flac"},
    {"plain.wma", "-map 0 -c:a wmav2 -map_metadata 2"},
    {"vorbis.mka", "-map 0 -c:a libvorbis -map_metadata 2"},
    {"plain.wv", "-map 0"},
    {"plain.tta", "-map 0"},
    {"plain.caf", "-map 0 -c:a alac"},
    {"plain.au", "-map 0"},
    {"pictures.mp4", "-map 0 -map 1 -c:v mpeg4 -c:a aac -map_metadata 2"},
    {"pictures.webm", "-map 0 -map 1 -c:v libvpx -deadline realtime -cpu-used 8 -c:a libopus"},
};

/// No distribution of the library: their numbers differ from one to another.
class Chance {
  public:
    Chance(std::uint64_t seed, std::uint64_t number) : engine_(seed * 0x9E3779B97F4A7C15 + number) {}
    std::size_t Below(std::size_t bound) { return bound == 0 ? 0 : engine_() % bound; }
    bool OneIn(std::size_t chances) { return Below(chances) == 0; }
    /// Headers are where it hurts, so every second place is near the beginning.
    std::size_t Place(const std::string& bytes) {
        return Below(OneIn(2) ? std::min<std::size_t>(bytes.size(), 600) : bytes.size());
    }
    /// Short ones as often as long ones.
    std::size_t Length(std::size_t most) {
        return std::min(most, std::size_t{1} + Below(std::size_t{1} << Below(15)));
    }

  private:
    std::mt19937_64 engine_;
};

void FlipBits(std::string& bytes, Chance& chance, const std::string&) {
    for (std::size_t count = 1 + chance.Below(24); count > 0; --count)
        bytes[chance.Place(bytes)] ^= static_cast<char>(1 << chance.Below(8));
}

void FillRun(std::string& bytes, Chance& chance, const std::string&) {
    const std::size_t begin = chance.Place(bytes);
    const std::size_t length = chance.Length(bytes.size() - begin);
    const bool noise = chance.OneIn(2);
    const char one = chance.OneIn(2) ? '\0' : '\xFF';
    for (std::size_t i = begin; i < begin + length; ++i)
        bytes[i] = noise ? static_cast<char>(chance.Below(256)) : one;
}

void Cut(std::string& bytes, Chance& chance, const std::string&) {
    const std::size_t begin = chance.Place(bytes);
    bytes.erase(begin, chance.OneIn(2) ? std::string::npos : chance.Length(bytes.size() - begin));
}

void Double(std::string& bytes, Chance& chance, const std::string&) {
    const std::size_t begin = chance.Place(bytes);
    const std::string stretch = bytes.substr(begin, chance.Length(bytes.size() - begin));
    for (std::size_t times = 1 + chance.Below(4); times > 0; --times) bytes.insert(begin, stretch);
}

void Swap(std::string& bytes, Chance& chance, const std::string&) {
    const std::size_t first = chance.Place(bytes);
    const std::size_t second = first + chance.Below(bytes.size() - first);
    const std::size_t end = second + chance.Length(bytes.size() - second);
    std::rotate(bytes.begin() + static_cast<std::ptrdiff_t>(first),
                bytes.begin() + static_cast<std::ptrdiff_t>(second),
                bytes.begin() + static_cast<std::ptrdiff_t>(end));
}

/// The place after the next name of four letters, as the sizes of chunks and atoms have it, or before it.
std::size_t BesideName(const std::string& bytes, Chance& chance) {
    const auto letter = [](unsigned char c) { return c == ' ' || (c >= 'A' && c <= 'z'); };
    const std::size_t begin = chance.Place(bytes);
    for (std::size_t i = begin; i + 4 <= bytes.size(); ++i)
        if (std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                        bytes.begin() + static_cast<std::ptrdiff_t>(i) + 4, letter))
            return chance.OneIn(2) && i >= 4 ? i - 4 : i + 4;
    return begin;
}

void SetExtreme(std::string& bytes, Chance& chance, const std::string&) {
    // Around the ends of the signed and unsigned integers of each width.
    constexpr unsigned kBits[] = {0, 1, 7, 8, 15, 16, 31, 32, 63, 64};
    for (std::size_t count = 1 + chance.Below(3); count > 0; --count) {
        const std::size_t begin = chance.OneIn(2) ? BesideName(bytes, chance) : chance.Place(bytes);
        const std::size_t width = std::size_t{1} << chance.Below(4);
        const unsigned bits = kBits[chance.Below(std::size(kBits))];
        const std::uint64_t end = bits < 64 ? std::uint64_t{1} << bits : 0;
        const std::uint64_t value = chance.OneIn(8) ? end - 16 : end + chance.Below(3) - 1;
        const bool bigEndian = chance.OneIn(2);
        for (std::size_t i = 0; i < width && begin + i < bytes.size(); ++i)
            bytes[begin + i] = static_cast<char>(value >> 8 * (bigEndian ? width - 1 - i : i));
    }
}

void Splice(std::string& bytes, Chance& chance, const std::string& other) {
    bytes.resize(chance.Place(bytes));
    bytes += other.substr(chance.Place(other));
}

}  // namespace

std::vector<SampleFile> MakeSampleFiles() {
    const test::TemporaryFolder folder;
    folder.Write("chapters", kChapters);
    std::string command = "cd '" + folder.Path().string() +
                          "' && ffmpeg -nostdin -v error -bitexact -f lavfi -i "
                          "'aevalsrc=0.4*sin(440*t*(1+t))|0.4*sin(660*t*(1+t)):s=44100:d=0.6' -f lavfi -i "
                          "testsrc=s=64x48:r=10:d=0.6 -i chapters";
    for (const auto& [name, options] : kOutputs)
        command += std::string(" ") + options + " -fflags +bitexact " + name;
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
    std::vector<SampleFile> samples;
    for (const auto& [name, options] : kOutputs)
        samples.push_back({std::filesystem::path(name).extension(), test::ReadBytes(folder / name)});
    return samples;
}

SampleFile Mutator::Make(std::uint64_t number) const {
    Chance chance(seed_, number);
    SampleFile file = samples_[number % samples_.size()];
    const SampleFile& other = samples_[chance.Below(samples_.size())];
    for (std::size_t count = 1 + chance.Below(3); count > 0 && !file.bytes.empty(); --count) {
        constexpr decltype(&Splice) kDamages[] = {FillRun, Cut,      Double,     Swap,
                                                  Splice,  FlipBits, SetExtreme, SetExtreme};
        kDamages[chance.Below(std::size(kDamages))](file.bytes, chance, other.bytes);
    }
    if (chance.OneIn(16)) file.ending = other.ending;
    return file;
}

}  // namespace sorakaze::sound::testing
