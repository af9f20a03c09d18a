// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <taglib/fileref.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>

#include "player/ForeignText.h"
#include "player/Tags.h"
#include "tests/player/MusicFolder.h"

namespace sorakaze::player {
namespace {

TagLib::String Utf8(const char* text) {
    return {text, TagLib::String::UTF8};
}

void WriteTags(const std::filesystem::path& file,
               std::initializer_list<std::pair<const char*, TagLib::StringList>> tags) {
    TagLib::FileRef reference(file.c_str());
    TagLib::PropertyMap properties;
    for (const auto& [key, values] : tags) properties[key] = values;
    reference.file()->setProperties(properties);
    ASSERT_TRUE(reference.save()) << file;
}

TEST(Tags, AreTheSameInEveryFormat) {
    const MusicFolder folder;
    for (const char* name : {"a.mp3", "a.m4a", "a.flac", "a.oga", "a.opus", "a.aiff", "a.wav"}) {
        const auto file = folder.WriteTone(name);
        WriteTags(file, {{"TITLE", Utf8("夜")},
                         {"ARTIST", Utf8("歌手")},
                         {"ALBUM", Utf8("集")},
                         {"TITLESORT", Utf8("Yoru")},
                         {"ARTISTSORT", Utf8("Kashu")},
                         {"ALBUMSORT", Utf8("Shu")}});
        EXPECT_EQ(ReadTags(file).Record(), "夜\t歌手\t集\tYoru\tKashu\tShu") << name;
    }
}

TEST(Tags, AreOneCleanLineEach) {
    const MusicFolder folder;
    const auto file = folder.WriteTone("a.flac");
    TagLib::StringList artists(Utf8("One"));
    artists.append(Utf8("Two"));
    artists.append(Utf8("One"));
    WriteTags(file, {{"TITLE", Utf8(" A\tB\nC\x01 ")}, {"ARTIST", artists}, {"ALBUM", Utf8("\n")}});
    EXPECT_EQ(ReadTags(file).Record(), "A B C\tOne, Two\t\t\t\t");
    WriteTags(file, {{"ALBUMARTIST", Utf8("Band")}, {"ALBUMARTISTSORT", Utf8("Bando")}});
    EXPECT_EQ(ReadTags(file).Record(), "\tBand\t\t\tBando\t");
    WriteTags(
        file,
        {{"ARTIST", Utf8("Singer")}, {"ALBUMARTIST", Utf8("Band")}, {"ALBUMARTISTSORT", Utf8("Bando")}});
    EXPECT_EQ(ReadTags(file).Record(), "\tSinger\t\t\t\t");
}

TEST(Tags, LabelledLatinButWrittenElsewhere) {
    const MusicFolder folder;
    const std::pair<const char*, const char*> cases[] = {
        {"\x83\x65\x83\x58\x83\x67", "テスト"}, {"東京", "東京"}, {"Don\x92t d\xE9j\xE0", "Don’t déjà"}};
    for (const auto& [bytes, text] : cases) {
        const auto file = folder.WriteTone("a.mp3");
        TagLib::MPEG::File mp3(file.c_str());
        auto* frame = new TagLib::ID3v2::TextIdentificationFrame("TIT2", TagLib::String::Latin1);
        frame->setText(TagLib::String(bytes, TagLib::String::Latin1));
        mp3.ID3v2Tag(true)->addFrame(frame);
        ASSERT_TRUE(mp3.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripOthers));
        EXPECT_EQ(ReadTags(file).title, text);
    }
}

TEST(Tags, OldTagsAtTheEnd) {
    const MusicFolder folder;
    const auto file = folder.WriteTone("a.mp3");
    TagLib::MPEG::File(file.c_str()).strip();
    std::string tag = "TAG";
    tag += std::string("\x83\x65\x83\x58\x83\x67") + std::string(24, '\0');
    tag += "Artist" + std::string(24, ' ') + "Album" + std::string(25, '\0') + std::string(35, '\0');
    std::ofstream(file, std::ios::binary | std::ios::app) << tag;
    EXPECT_EQ(ReadTags(file).Record(), "テスト\tArtist\tAlbum\t\t\t");
}

TEST(Tags, WhatIsNoSoundFileHasNone) {
    const MusicFolder folder;
    ::mkfifo((folder / "pipe.mp3").c_str(), 0600);
    folder.Write("empty.mp3");
    folder.Write("junk.m4a", std::string(5000, '\xFF'));
    folder.Write("text.flac", "fLaC and no more");
    for (const char* name : {"pipe.mp3", "empty.mp3", "junk.m4a", "text.flac", "missing.ogg", "."}) {
        EXPECT_EQ(ReadTags(folder / name), TrackText{}) << name;
    }
}

TEST(Tags, TitleFromAName) {
    EXPECT_EQ(TitleFromName("/x/01 A.B\tc.mp3"), "01 A.B c");
    EXPECT_EQ(TitleFromName("/x/Vol. 2"), "Vol. 2");
    EXPECT_EQ(TitleFromName("/x/\x83\x65\x83\x58\x83\x67.wav"), "テスト");
}

}  // namespace
}  // namespace sorakaze::player
