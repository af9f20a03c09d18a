// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Every format of the demo library takes its tags and its cover, and playlists name the files that are made.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" {
#include <libavformat/avformat.h>
}

#include <filesystem>
#include <map>
#include <set>

#include "app/runtime/sound/SoundFileWriter.h"
#include "station/synth/TrackTags.h"

namespace sorakaze::station {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

struct Found {
    std::map<std::string, std::string> tags;  ///< names in lower case
    bool hasCover = false;
};

void Collect(const AVDictionary* from, Found& found) {
    for (const AVDictionaryEntry* entry = nullptr;
         (entry = av_dict_get(from, "", entry, AV_DICT_IGNORE_SUFFIX));) {
        std::string key = entry->key;
        for (char& byte : key) byte = static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
        found.tags.emplace(key, entry->value);
    }
}

Found Look(const fs::path& file) {
    Found found;
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, file.c_str(), nullptr, nullptr) < 0) return found;
    Collect(context->metadata, found);
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVStream& stream = *context->streams[i];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO) Collect(stream.metadata, found);
        if (stream.attached_pic.size > 0) found.hasCover = true;
    }
    avformat_close_input(&context);
    return found;
}

TEST(TrackFiles, CarryTagsAndCovers) {
    std::string pattern = (fs::temp_directory_path() / "tracks-XXXXXX").string();
    const fs::path folder = mkdtemp(pattern.data());
    std::set<std::string> endings;
    for (const Track& track : Tracks()) {
        SCOPED_TRACE(track.file);
        const std::string ending = fs::path(track.file).extension();
        endings.insert(ending);
        const fs::path file = folder / ("sound" + ending);
        auto writer = sound::SoundFileWriter::Create(file);
        writer->Write(std::vector<float>(9600, 0.01F));
        writer->Finish();
        WriteTags(file, track, Encode(Paint(16, track.cover), track.coverFormat));
        const Found found = Look(file);
        EXPECT_EQ(found.tags.at("title"), track.title);
        EXPECT_EQ(found.tags.at("artist"), track.artist);
        EXPECT_EQ(found.tags.at("album"), track.album);
        EXPECT_EQ(found.tags.at("track"), std::to_string(track.number));
        EXPECT_TRUE(found.hasCover);
        if (*track.titleSort) {
            const char* key = found.tags.contains("titlesort") ? "titlesort" : "title-sort";
            EXPECT_EQ(found.tags.at(key), track.titleSort);
        }
    }
    EXPECT_GE(endings.size(), 6u);
    fs::remove_all(folder);
}

TEST(TrackFiles, PlaylistsNameThem) {
    const std::vector<int> seconds(Tracks().size(), 42);
    for (const Playlist& playlist : Playlists()) {
        EXPECT_EQ(std::string(playlist.file).find(','), std::string::npos) << "names are joined by commas";
        if (std::string(playlist.file).ends_with(".xspf")) continue;
        const std::string text = PlaylistText(playlist, seconds);
        for (const int place : playlist.tracks)
            EXPECT_THAT(text, HasSubstr(fs::path(Tracks()[static_cast<std::size_t>(place)].file).stem()));
    }
    EXPECT_THAT(PlaylistText(Playlists().back(), seconds),
                HasSubstr("/%E5%8D%83%E3%81%AE%E9%9A%8E%E6%AE%B5.mp3"));
}

}  // namespace
}  // namespace sorakaze::station
