// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/TrackTags.h"

#include <taglib/aifffile.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/flacfile.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4coverart.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/opusfile.h>
#include <taglib/tpropertymap.h>
#include <taglib/vorbisfile.h>

#include <stdexcept>
#include <string>

namespace sorakaze::station {
namespace {

TagLib::String Text(const char* utf8) {
    return {utf8, TagLib::String::UTF8};
}

TagLib::ByteVector Bytes(const EncodedPicture& cover) {
    return {cover.bytes.data(), static_cast<unsigned>(cover.bytes.size())};
}

TagLib::PropertyMap Properties(const Track& track) {
    TagLib::PropertyMap map;
    const auto set = [&](const char* key, const char* value) {
        if (*value) map.replace(key, TagLib::StringList(Text(value)));
    };
    set("TITLE", track.title);
    set("ARTIST", track.artist);
    set("ALBUM", track.album);
    set("TRACKNUMBER", std::to_string(track.number).c_str());
    set("DATE", std::to_string(track.year).c_str());
    set("GENRE", track.genre);
    set("TITLESORT", track.titleSort);
    set("ARTISTSORT", track.artistSort);
    set("ALBUMSORT", track.albumSort);
    return map;
}

TagLib::FLAC::Picture* XiphPicture(const EncodedPicture& cover, int side) {
    auto* picture = new TagLib::FLAC::Picture;
    picture->setType(TagLib::FLAC::Picture::FrontCover);
    picture->setMimeType(cover.mimeType);
    picture->setWidth(side);
    picture->setHeight(side);
    picture->setColorDepth(24);
    picture->setData(Bytes(cover));
    return picture;
}

void AddCover(TagLib::ID3v2::Tag& tag, const EncodedPicture& cover) {
    auto* frame = new TagLib::ID3v2::AttachedPictureFrame;
    frame->setType(TagLib::ID3v2::AttachedPictureFrame::FrontCover);
    frame->setMimeType(cover.mimeType);
    frame->setPicture(Bytes(cover));
    tag.addFrame(frame);
}

void AddCover(TagLib::MP4::Tag& tag, const EncodedPicture& cover) {
    const auto format =
        cover.mimeType == "image/png" ? TagLib::MP4::CoverArt::PNG : TagLib::MP4::CoverArt::JPEG;
    TagLib::MP4::CoverArtList covers;
    covers.append({format, Bytes(cover)});
    tag.setItem("covr", covers);
}

/// `file` is one of the library's classes, `addCover` puts the picture where that class keeps it.
template <typename File, typename AddPicture>
void Write(File&& file, const Track& track, const AddPicture& addCover) {
    if (!file.isValid()) throw std::runtime_error(std::string("can't read back ") + track.file);
    file.setProperties(Properties(track));
    addCover(file);
    if (!file.save()) throw std::runtime_error(std::string("can't write the tags of ") + track.file);
}

}  // namespace

void WriteTags(const std::filesystem::path& path, const Track& track, const EncodedPicture& cover) {
    namespace tl = TagLib;
    constexpr int kSide = 480;
    const std::string ending = path.extension().string();
    const char* name = path.c_str();
    const auto toXiph = [&](auto& file) { file.tag()->addPicture(XiphPicture(cover, kSide)); };
    if (ending == ".mp3") {
        Write(tl::MPEG::File(name), track, [&](auto& file) { AddCover(*file.ID3v2Tag(true), cover); });
    } else if (ending == ".aiff") {
        Write(tl::RIFF::AIFF::File(name), track, [&](auto& file) { AddCover(*file.tag(), cover); });
    } else if (ending == ".m4a") {
        Write(tl::MP4::File(name), track, [&](auto& file) { AddCover(*file.tag(), cover); });
    } else if (ending == ".flac") {
        Write(tl::FLAC::File(name), track, [&](auto& file) { file.addPicture(XiphPicture(cover, kSide)); });
    } else if (ending == ".oga") {
        Write(tl::Ogg::Vorbis::File(name), track, toXiph);
    } else {
        Write(tl::Ogg::Opus::File(name), track, toXiph);
    }
}

}  // namespace sorakaze::station
