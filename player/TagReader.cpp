// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TagReader.h"

#include <taglib/fileref.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mp4file.h>
#include <taglib/tfilestream.h>
#include <taglib/tpropertymap.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "player/ForeignText.h"

namespace sorakaze::player {

namespace {

TagLib::String Decoded(const TagLib::ByteVector& data) {
    const std::string_view bytes(data.data(), data.size());
    return {CleanLine(bytes.substr(0, bytes.find('\0'))), TagLib::String::UTF8};
}

// The formats that know only Latin-1 hold whatever the writer's system used.
class UnlabelledId3v2 : public TagLib::ID3v2::Latin1StringHandler {
  public:
    TagLib::String parse(const TagLib::ByteVector& data) const override { return Decoded(data); }
};
class UnlabelledId3v1 : public TagLib::ID3v1::StringHandler {
  public:
    TagLib::String parse(const TagLib::ByteVector& data) const override { return Decoded(data); }
};
class UnlabelledInfo : public TagLib::RIFF::Info::StringHandler {
  public:
    TagLib::String parse(const TagLib::ByteVector& data) const override { return Decoded(data); }
};

void UseOwnDecoding() {
    static const bool done = [] {
        static const UnlabelledId3v2 id3v2;
        static const UnlabelledId3v1 id3v1;
        static const UnlabelledInfo info;
        TagLib::ID3v2::Tag::setLatin1StringHandler(&id3v2);
        TagLib::ID3v1::Tag::setStringHandler(&id3v1);
        TagLib::RIFF::Info::Tag::setStringHandler(&info);
        return true;
    }();
    static_cast<void>(done);
}

/// An open file under the name that it was opened by.
class NamedStream final : public TagLib::FileStream {
  public:
    NamedStream(int descriptor, std::string name)
        : FileStream(descriptor, kReadOnly), name_(std::move(name)) {}
    TagLib::FileName name() const override { return name_.c_str(); }

  private:
    static constexpr bool kReadOnly = true;
    const std::string name_;
};

/// The value for `key`, of a gain. In MP4 files such tags aren't among the properties.
std::string GainOf(TagLib::File& file, const TagLib::PropertyMap& properties, const char* key) {
    const auto* const mp4 = dynamic_cast<const TagLib::MP4::File*>(&file);
    if (!mp4 || !mp4->tag()) return properties.value(key, {}).toString().to8Bit(true);
    for (const auto& [name, item] : mp4->tag()->itemMap())
        if (name.upper() == TagLib::String("----:COM.APPLE.ITUNES:") + key)
            return item.toStringList().toString().to8Bit(true);
    return {};
}

/// All values for `key`, joined as a speaker would read them.
std::string ValueOf(const TagLib::PropertyMap& properties, const char* key) {
    std::vector<std::string> values;
    for (const TagLib::String& value : properties.value(key, {})) {
        std::string clean = CleanLine(value.to8Bit(true));
        if (!clean.empty() && std::find(values.begin(), values.end(), clean) == values.end()) {
            values.push_back(std::move(clean));
        }
    }
    std::string joined;
    for (const std::string& value : values) joined += (joined.empty() ? "" : ", ") + value;
    // A character that is cut in two goes as a whole.
    return joined.size() > kLongestTag ? CleanLine(joined.substr(0, kLongestTag)) : joined;
}

}  // namespace

TrackTags ReadTags(FileDescriptor file, const std::string& name) {
    TrackTags tags;
    UseOwnDecoding();
    constexpr bool kReadSound = false;
    NamedStream stream(file.Release(), name);
    const TagLib::FileRef reference(&stream, kReadSound);
    if (reference.isNull() || reference.file() == nullptr) return tags;
    const TagLib::PropertyMap properties = reference.file()->properties();
    TrackText& text = tags.text;
    text.title = ValueOf(properties, "TITLE");
    text.artist = ValueOf(properties, "ARTIST");
    text.album = ValueOf(properties, "ALBUM");
    text.titleSort = ValueOf(properties, "TITLESORT");
    text.artistSort = ValueOf(properties, "ARTISTSORT");
    text.albumSort = ValueOf(properties, "ALBUMSORT");
    TrackText ofAlbum;
    ofAlbum.artist = ValueOf(properties, "ALBUMARTIST");
    ofAlbum.artistSort = ValueOf(properties, "ALBUMARTISTSORT");
    text.FillFrom(ofAlbum);
    TagLib::File& sound = *reference.file();
    tags.loudness = LoudnessFromR128Gain(GainOf(sound, properties, "R128_TRACK_GAIN"));
    if (!tags.loudness)
        tags.loudness = LoudnessFromReplayGain(GainOf(sound, properties, "REPLAYGAIN_TRACK_GAIN"));
    return tags;
}

}  // namespace sorakaze::player
