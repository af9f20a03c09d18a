// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Every format of the demo library takes its tags and its cover, and playlists name the files that are made,
// as the player reads them.
#include <gtest/gtest.h>

#include <algorithm>

#include "base/RegularFile.h"
#include "player/EntryFile.h"
#include "player/PlaylistFiles.h"
#include "player/TagReader.h"
#include "sound/AvSupport.h"
#include "sound/encoding/SoundFileWriter.h"
#include "station/synth/TrackTags.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::station {
namespace {

namespace fs = std::filesystem;

bool HasCover(const fs::path& file) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, file.c_str(), nullptr, nullptr) < 0) return false;
    const sound::AvInputPointer context(opened);
    return std::any_of(context->streams, context->streams + context->nb_streams,
                       [](const AVStream* stream) { return stream->attached_pic.size > 0; });
}

TEST(TrackFiles, CarryTagsAndCovers) {
    const test::TemporaryFolder folder;
    for (const Track& track : Tracks()) {
        SCOPED_TRACE(track.file);
        const fs::path file = folder.Path() / ("sound" + fs::path(track.file).extension().string());
        auto writer = sound::SoundFileWriter::Create(file);
        writer->Write(std::vector<float>(9600, 0.01F));
        writer->Finish();
        WriteTags(file, track, Encode(Paint(16, track.cover), track.coverFormat));
        EXPECT_EQ(
            player::ReadTags(std::move(OpenNonEmptyFile(file)->descriptor), file.filename().string()).text,
            (player::TrackText{track.title, track.artist, track.album, track.titleSort, track.artistSort,
                               track.albumSort}));
        EXPECT_TRUE(HasCover(file));
    }
}

TEST(TrackFiles, PlaylistsNameThem) {
    const std::vector<int> seconds(Tracks().size(), 42);
    for (const Playlist& playlist : Playlists()) {
        const std::string name = playlist.file;
        EXPECT_EQ(name.find(','), std::string::npos) << "names are joined by commas";
        const auto entries = player::ParsePlaylist(name, PlaylistText(playlist, seconds)).tracks;
        ASSERT_EQ(entries.size(), playlist.tracks.size()) << name;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const Track& track = Tracks()[static_cast<std::size_t>(playlist.tracks[i])];
            EXPECT_EQ(player::Spellings(entries[i]).front(), track.file) << name;
            EXPECT_EQ(player::TrackText::Unpacked(entries[i].words).title, track.title) << name;
        }
    }
}

}  // namespace
}  // namespace sorakaze::station
