// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the player costs on a large library: 100,000 files, once in one folder and once in 10,000 folders.
#include <benchmark/benchmark.h>
#include <sys/stat.h>
#include <taglib/fileref.h>
#include <taglib/tag.h>

#include "player/FolderTree.h"
#include "player/LocalPlayer.h"
#include "player/MusicLibrary.h"
#include "player/PlaylistFiles.h"
#include "player/Tags.h"
#include "tests/player/MusicFolder.h"

namespace sorakaze::player {
namespace {

constexpr int kFiles = 100'000;

/// Files of an hour ago: what was written just now is never taken from a cache.
void MakeOld(const std::filesystem::path& path) {
    std::filesystem::last_write_time(path,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
}

void MakeFiles(const MusicFolder& music, int folders) {
    for (int folder = 0; folder < folders; ++folder) {
        const std::string name = "Artist and Album " + std::to_string(folder);
        for (int file = 0; file < kFiles / folders; ++file) {
            music.Write(name + "/" + std::to_string(file) + " A title of ordinary length.mp3");
        }
        MakeOld(music / name);
    }
    MakeOld(music.Path());
}

const MusicFolder& FilesInFolders(int folders) {
    static const MusicFolder one;
    static const MusicFolder many;
    static const bool made = (MakeFiles(one, 1), MakeFiles(many, kFiles / 10), true);
    static_cast<void>(made);
    return folders == 1 ? one : many;
}

/// A tagged file, and a playlist that names it 100,000 times.
struct LongPlaylist : MusicFolder {
    LongPlaylist() {
        const auto file = WriteTone("tagged.mp3", 30);
        TagLib::FileRef tags(file.c_str());
        tags.tag()->setTitle("A title");
        tags.tag()->setArtist("An artist");
        tags.save();
        std::string list = "#EXTM3U\n";
        for (int i = 0; i < kFiles; ++i) list += "#EXTINF:123,An artist - A title\ntagged.mp3\n";
        for (const auto& written : {file, Write("list.m3u8", list), Path()}) MakeOld(written);
    }
};

const LongPlaylist& Playlist() {
    static const LongPlaylist playlist;
    return playlist;
}

void FirstListing(benchmark::State& state) {
    const auto& music = FilesInFolders(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        MusicLibrary library({music.Path()}, MusicLibrary::Watching::InCall);
        if (library.Count("Library") != kFiles) state.SkipWithError("files are missing");
    }
}
BENCHMARK(FirstListing)->Arg(1)->Arg(kFiles / 10)->Unit(benchmark::kMillisecond)->UseRealTime();

/// What the watching thread does once a second while a show runs.
void RepeatedScan(benchmark::State& state) {
    const std::vector roots = {FilesInFolders(static_cast<int>(state.range(0))).Path()};
    MissingFolders away;
    auto tree = FolderTree::Scan(roots, nullptr, away, {});
    for (auto _ : state) tree = FolderTree::Scan(roots, tree.get(), away, {});
}
BENCHMARK(RepeatedScan)->Arg(1)->Arg(kFiles / 10)->Unit(benchmark::kMicrosecond);

void Count(benchmark::State& state, const char* playlist) {
    MusicLibrary library({FilesInFolders(kFiles / 10).Path(), Playlist().Path()});
    if (library.Count(playlist) < kFiles) state.SkipWithError("tracks are missing");
    for (auto _ : state) benchmark::DoNotOptimize(library.Count(playlist));
}
BENCHMARK_CAPTURE(Count, Library, "Library")->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_CAPTURE(Count, Playlist, "list")->Unit(benchmark::kMicrosecond)->UseRealTime();

void ParsePlaylistFile(benchmark::State& state) {
    std::ifstream file(Playlist() / "list.m3u8", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    for (auto _ : state) benchmark::DoNotOptimize(ParsePlaylist("list.m3u8", bytes));
}
BENCHMARK(ParsePlaylistFile)->Unit(benchmark::kMillisecond);

/// Both ask for another track each time, so that no tags are remembered.
void TagsAlone(benchmark::State& state) {
    const auto file = Playlist() / "tagged.mp3";
    sound::MixingEngine engine(sound::MixingMode::Offline);
    for (auto _ : state) benchmark::DoNotOptimize(ReadTags(engine, file));
}
BENCHMARK(TagsAlone)->Unit(benchmark::kMicrosecond);

void Record(benchmark::State& state) {
    const MusicFolder music;
    const auto a = music.WriteTone("a.mp3");
    const auto b = music.WriteTone("b.mp3");
    std::string list;
    for (int i = 0; i < kFiles; i += 2) list += "a.mp3\nb.mp3\n";
    for (const auto& written : {a, b, music.Write("list.m3u", list), music.Path()}) MakeOld(written);
    sound::MixingEngine engine(sound::MixingMode::Offline);
    LocalPlayer player(engine, std::make_unique<MusicLibrary>(std::vector{music.Path()}));
    int number = 0;
    for (auto _ : state) benchmark::DoNotOptimize(player.SongInfo("list", ++number % kFiles + 1));
}
BENCHMARK(Record)->Unit(benchmark::kMicrosecond)->UseRealTime();

void StateAndPosition(benchmark::State& state) {
    sound::MixingEngine engine(sound::MixingMode::Offline);
    LocalPlayer player(engine, std::make_unique<MusicLibrary>(std::vector{Playlist().Path()}));
    player.Play("list", kFiles / 2);
    std::vector<float> second(sound::kSampleRate * sound::kChannels);
    engine.Mix(second);
    if (player.State() != "playing") state.SkipWithError("nothing plays");
    for (auto _ : state) {
        benchmark::DoNotOptimize(player.State());
        benchmark::DoNotOptimize(player.Position());
    }
}
BENCHMARK(StateAndPosition)->Unit(benchmark::kNanosecond);

}  // namespace
}  // namespace sorakaze::player

BENCHMARK_MAIN();
