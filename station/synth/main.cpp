// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// make-station sounds STATION LIST: composes, plays, encodes and tags the demo station's music and sounds.
// make-station files SOURCE STATION LIST: copies what is written by hand, SOURCE/Programs and
// SOURCE/Resources. LIST, relative to STATION, keeps account of what was made. Run by the build.
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <future>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "sound/encoding/SoundFileWriter.h"
#include "station/synth/Catalogue.h"
#include "station/synth/Installer.h"
#include "station/synth/Master.h"
#include "station/synth/StationSounds.h"
#include "station/synth/TrackTags.h"

namespace {

using namespace sorakaze;
using namespace sorakaze::station;
namespace fs = std::filesystem;

constexpr double kMusicLoudness = -16;
/// Sounds are played a little below full volume, and are short.
constexpr double kSoundLoudness = -15;
/// Encoders with losses add up to half a decibel to a peak.
constexpr double kCeiling = -1.8;
constexpr int kCoverSide = 480;

void WriteSound(const Stereo& sound, const fs::path& file) {
    auto writer = sound::SoundFileWriter::Create(file);
    std::vector<float> block;
    constexpr std::size_t kBlock = 48000;
    for (std::size_t at = 0; at < sound.Length(); at += kBlock) {
        block.clear();
        for (std::size_t i = at; i < std::min(at + kBlock, sound.Length()); ++i) {
            block.push_back(sound.left[i]);
            block.push_back(sound.right[i]);
        }
        writer->Write(block);
    }
    writer->Finish();
}

int MakeTrack(const Track& track, Installer& installer) {
    Stereo sound = track.play();
    Master(sound, kMusicLoudness, kCeiling);
    const fs::path name = fs::path("Music") / track.file;
    const fs::path file = installer.Work(name);
    WriteSound(sound, file);
    WriteTags(file, track, Encode(Paint(kCoverSide, track.cover), track.coverFormat));
    installer.Place(file, name);
    return static_cast<int>(std::lround(sound.Seconds()));
}

void MakeSound(const StationSound& made, Installer& installer) {
    Stereo sound = made.play();
    Master(sound, kSoundLoudness, kCeiling);
    const fs::path name = fs::path("Sounds") / made.file;
    const fs::path file = installer.Work(name);
    WriteSound(sound, file);
    installer.Place(file, name);
}

/// Carries the tasks out on as many threads as there are processors; the first failure is thrown when all
/// have ended.
void RunAll(const std::vector<std::function<void()>>& tasks) {
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t task; (task = next++) < tasks.size();) tasks[task]();
    };
    std::vector<std::future<void>> workers;
    for (unsigned i = 0; i < std::clamp(std::thread::hardware_concurrency(), 1U, 8U); ++i) {
        workers.push_back(std::async(std::launch::async, work));
    }
    for (auto& worker : workers) worker.wait();
    for (auto& worker : workers) worker.get();
}

void MakeSounds(const fs::path& station, const fs::path& list) {
    Installer installer(station, list);
    const auto tracks = Tracks();
    std::vector<int> seconds(tracks.size());
    std::vector<std::function<void()>> tasks;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        tasks.emplace_back([&, i] { seconds[i] = MakeTrack(tracks[i], installer); });
    }
    for (const StationSound& sound : StationSounds()) {
        tasks.emplace_back([&] { MakeSound(sound, installer); });
    }
    RunAll(tasks);
    for (const Playlist& playlist : Playlists()) {
        const fs::path name = fs::path("Music") / playlist.file;
        const fs::path file = installer.Work(name);
        std::ofstream(file, std::ios::binary) << PlaylistText(playlist, seconds);
        installer.Place(file, name);
    }
    installer.Finish();
}

void CopyFiles(const fs::path& source, const fs::path& station, const fs::path& list) {
    Installer installer(station, list);
    const auto copy = [&](const fs::path& from, const fs::path& to) {
        for (const auto& entry : fs::directory_iterator(source / from)) {
            if (!entry.is_regular_file()) continue;
            const fs::path name = to / entry.path().filename();
            const fs::path file = installer.Work(name);
            fs::copy_file(entry.path(), file);
            installer.Place(file, name);
        }
    };
    copy("Programs", "Programs");
    copy("Resources", "Sorakaze.app/Contents/Resources");
    installer.Finish();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    try {
        if (words.size() == 3 && words[0] == "sounds") {
            MakeSounds(words[1], words[2]);
            return 0;
        }
        if (words.size() == 4 && words[0] == "files") {
            CopyFiles(words[1], words[2], words[3]);
            return 0;
        }
        std::fputs(
            "make-station: the call is: make-station sounds STATION LIST, or files SOURCE STATION LIST\n",
            stderr);
        return 2;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "make-station: %s\n", problem.what());
        return 1;
    }
}
