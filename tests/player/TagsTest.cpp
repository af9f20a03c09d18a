// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <taglib/fileref.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>

#include "player/Tags.h"
#include "sound/MixingEngine.h"
#include "tests/player/MusicFolder.h"

namespace sorakaze::player {
namespace {

/// Through a decoder's process, as the player does.
TrackTags Read(const std::filesystem::path& file) {
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
        EXPECT_EQ(Read(file).text.Record(), c.record) << file;
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
    EXPECT_EQ(Read(file).text.Record(), "テスト\tArtist\tAlbum\t\t\t");
    TagLib::MPEG::File mp3(file.c_str());
    auto* frame = new TagLib::ID3v2::TextIdentificationFrame("TIT2", TagLib::String::Latin1);
    frame->setText(TagLib::String(bytes, TagLib::String::Latin1));
    mp3.ID3v2Tag(true)->addFrame(frame);
    ASSERT_TRUE(mp3.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripOthers));
    EXPECT_EQ(Read(file).text.Record(), "テスト\t\t\t\t\t") << "labelled as another";
}

TEST(Tags, GainsTellTheLoudnessInEveryFormat) {
    const MusicFolder folder;
    const auto loudness = [&](const std::string& name,
                              const std::vector<std::pair<const char*, const char*>>& tags) {
        const auto file = folder.WriteTone(name);
        TagLib::FileRef reference(file.c_str());
        TagLib::PropertyMap properties;
        for (const auto& [key, value] : tags) properties[key].append(value);
        reference.file()->setProperties(properties);
        if (auto* const mp4 = dynamic_cast<TagLib::MP4::File*>(reference.file()))
            for (const auto& [key, value] : tags)
                mp4->tag()->setItem(TagLib::String("----:com.apple.iTunes:") + key,
                                    TagLib::StringList(value));
        EXPECT_TRUE(reference.save()) << file;
        return Read(file).loudness;
    };
    for (const char* ending : {"mp3", "m4a", "flac", "oga", "opus", "aiff", "wav"})
        EXPECT_EQ(loudness(std::string("a.") + ending, {{"REPLAYGAIN_TRACK_GAIN", "-6.25 dB"}}), -11.75f)
            << ending;
    EXPECT_EQ(loudness("a.opus", {{"R128_TRACK_GAIN", "-1792"}, {"REPLAYGAIN_TRACK_GAIN", "3 dB"}}), -16.0f);
    EXPECT_EQ(loudness("a.flac", {{"R128_TRACK_GAIN", "loud"}, {"REPLAYGAIN_TRACK_GAIN", "+3.5"}}), -21.5f);
    EXPECT_EQ(loudness("a.flac", {{"TITLE", "A"}}), std::nullopt);

    const std::pair<const char*, std::optional<float>> gains[] = {
        {"-6.25 dB", -11.75f},       {" +2,5 DB ", -20.5f},    {"0", -18.0f},
        {"+96 dB", std::nullopt},    {"NaN", std::nullopt},    {"-inf dB", std::nullopt},
        {"1e9 dB", std::nullopt},    {"", std::nullopt},       {"dB", std::nullopt},
        {"-6.25 dB!", std::nullopt}, {"+-6 dB", std::nullopt}, {"1e-999", std::nullopt}};
    for (const auto& [gain, expected] : gains) EXPECT_EQ(LoudnessFromReplayGain(gain), expected) << gain;
    const std::pair<const char*, std::optional<float>> steps[] = {
        {"0", -23.0f},         {"+256", -24.0f},  {"-32768", std::nullopt}, {"99999999999", std::nullopt},
        {"1.5", std::nullopt}, {"", std::nullopt}};
    for (const auto& [gain, expected] : steps) EXPECT_EQ(LoudnessFromR128Gain(gain), expected) << gain;
    for (const char* answer : {"a\tb\t\t\t\t\tnan", "a\tb\t\t\t\t\t12", "a\tb", "a\tb\t\t\t\t\t-20\t-10x"})
        EXPECT_EQ(TagsFromAnswer(answer).loudness.value_or(0), std::string(answer).ends_with('x') ? -20 : 0);
}

TEST(Tags, WhatHasNoneIsCalledByItsName) {
    const MusicFolder folder;
    ::mkfifo((folder / "pipe.mp3").c_str(), 0600);
    folder.Write("empty.mp3");
    folder.Write("junk.m4a", std::string(5000, '\xFF'));
    folder.Write("text.flac", "fLaC and no more");
    for (const char* name : {"pipe.mp3", "empty.mp3", "junk.m4a", "text.flac", "missing.ogg", "."}) {
        EXPECT_EQ(Read(folder / name), TrackTags{}) << name;
    }
}

}  // namespace
}  // namespace sorakaze::player
