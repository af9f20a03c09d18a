// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <taglib/fileref.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>

#include "player/Tags.h"
#include "sound/MixingEngine.h"
#include "tests/player/MusicFolder.h"

namespace sorakaze::player {
namespace {

/// Through a decoder's process, as the player does.
TrackText Read(const std::filesystem::path& file) {
    static sound::MixingEngine engine(sound::MixingMode::Offline);
    return ReadTags(engine, file);
}

TEST(Tags, AreCleanLinesAndTheSameInEveryFormat) {
    struct Case {
        std::string file;
        std::vector<std::pair<const char*, const char*>> tags;
        const char* record;
    };
    std::vector<Case> cases = {
        {"a.flac",
         {{"TITLE", " A\tB\nC\x01 "},
          {"ARTIST", "One"},
          {"ARTIST", "Two"},
          {"ARTIST", "One"},
          {"ALBUM", "\n"}},
         "A B C\tOne, Two\t\t\t\t"},
        {"a.flac", {{"ALBUMARTIST", "Band"}, {"ALBUMARTISTSORT", "Bando"}}, "\tBand\t\t\tBando\t"},
        {"a.flac",
         {{"ARTIST", "Singer"}, {"ALBUMARTIST", "Band"}, {"ALBUMARTISTSORT", "Bando"}},
         "\tSinger\t\t\t\t"},
    };
    for (const char* ending : {"mp3", "m4a", "flac", "oga", "opus", "aiff", "wav"}) {
        cases.push_back({std::string("a.") + ending,
                         {{"TITLE", "夜"},
                          {"ARTIST", "歌手"},
                          {"ALBUM", "集"},
                          {"TITLESORT", "Yoru"},
                          {"ARTISTSORT", "Kashu"},
                          {"ALBUMSORT", "Shu"}},
                         "夜\t歌手\t集\tYoru\tKashu\tShu"});
    }
    const MusicFolder folder;
    for (const Case& c : cases) {
        const auto file = folder.WriteTone(c.file);
        TagLib::PropertyMap properties;
        for (const auto& [key, value] : c.tags) properties[key].append({value, TagLib::String::UTF8});
        TagLib::FileRef reference(file.c_str());
        reference.file()->setProperties(properties);
        ASSERT_TRUE(reference.save()) << file;
        EXPECT_EQ(Read(file).Record(), c.record) << file;
    }
}

TEST(Tags, WithoutAnEncodingAreReadAsWhatTheyAre) {
    const MusicFolder folder;
    const auto file = folder.WriteTone("a.mp3");
    TagLib::MPEG::File(file.c_str()).strip();
    const std::string bytes = "\x83\x65\x83\x58\x83\x67";
    std::ofstream(file, std::ios::binary | std::ios::app) << "TAG" + bytes + std::string(24, '\0') +
                                                                 "Artist" + std::string(24, ' ') + "Album" +
                                                                 std::string(60, '\0');
    EXPECT_EQ(Read(file).Record(), "テスト\tArtist\tAlbum\t\t\t");
    TagLib::MPEG::File mp3(file.c_str());
    auto* frame = new TagLib::ID3v2::TextIdentificationFrame("TIT2", TagLib::String::Latin1);
    frame->setText(TagLib::String(bytes, TagLib::String::Latin1));
    mp3.ID3v2Tag(true)->addFrame(frame);
    ASSERT_TRUE(mp3.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripOthers));
    EXPECT_EQ(Read(file).Record(), "テスト\t\t\t\t\t") << "labelled as another";
}

TEST(Tags, WhatHasNoneIsCalledByItsName) {
    const MusicFolder folder;
    ::mkfifo((folder / "pipe.mp3").c_str(), 0600);
    folder.Write("empty.mp3");
    folder.Write("junk.m4a", std::string(5000, '\xFF'));
    folder.Write("text.flac", "fLaC and no more");
    for (const char* name : {"pipe.mp3", "empty.mp3", "junk.m4a", "text.flac", "missing.ogg", "."}) {
        EXPECT_EQ(Read(folder / name), TrackText{}) << name;
    }
    EXPECT_EQ(TitleFromName("/x/01 A.B\tc.mp3"), "01 A.B c");
    EXPECT_EQ(TitleFromName("/x/Vol. 2"), "Vol. 2");
}

}  // namespace
}  // namespace sorakaze::player
