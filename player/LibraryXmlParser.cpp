// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <charconv>
#include <string>
#include <unordered_map>
#include <vector>

#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"
#include "player/XmlStream.h"

namespace sorakaze::player {

namespace {

/// A field of TrackText for a key of a track, or nothing.
std::string TrackText::*FieldFor(std::string_view key) {
    if (key == "Name") return &TrackText::title;
    if (key == "Artist") return &TrackText::artist;
    if (key == "Album") return &TrackText::album;
    if (key == "Sort Name") return &TrackText::titleSort;
    if (key == "Sort Artist") return &TrackText::artistSort;
    if (key == "Sort Album") return &TrackText::albumSort;
    return nullptr;
}

/// Most of a library is what isn't asked for.
bool IsOfTrack(std::string_view key) {
    return key == "Track ID" || key == "Location" || FieldFor(key) != nullptr;
}

std::optional<std::uint32_t> NumberIn(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return std::nullopt;
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data() + first, text.data() + text.size(), number);
    return error == std::errc{} ? std::optional(number) : std::nullopt;
}

/// A property list is dictionaries of alternating keys and values. What an element is follows from where it
/// is and, for a value, from the key before it.
enum class Kind {
    PropertyList,
    Root,
    Tracks,  ///< a dictionary of dictionaries
    Track,
    Lists,  ///< an array of dictionaries
    List,
    Items,  ///< an array of dictionaries
    Item,
    Key,
    Value,  ///< of a track, a list or an item
    Other
};

class Parser final : public PlaylistParser, private XmlVisitor {
  public:
    bool Read(std::string_view piece) override { return stream_.Read(piece); }

    ParsedPlaylist Finish() override {
        while (!open_.empty()) End();
        ParsedPlaylist library{{}, hasTracks_ || hasLists_, std::move(lists_)};
        // Only now is every number known: the lists may come first.
        for (ParsedPlaylist::List& list : library.lists) {
            std::erase_if(list.tracks, [this](std::uint32_t& track) {
                const auto found = indices_.find(track);
                if (found == indices_.end()) return true;
                track = found->second;
                return false;
            });
            list.tracks.shrink_to_fit();
        }
        library.tracks = entries_.Take();
        return library;
    }

  private:
    struct Element {
        Kind kind;
        std::string key;  ///< the last one in it
        bool hasKey = false;
    };

    Kind KindOf(std::string_view name) {
        if (open_.empty()) return name == "plist" ? Kind::PropertyList : Kind::Other;
        const Element& in = open_.back();
        if (in.kind == Kind::PropertyList) return name == "dict" && !rootSeen_ ? Kind::Root : Kind::Other;
        if (in.kind == Kind::Lists) return name == "dict" ? Kind::List : Kind::Other;
        if (in.kind == Kind::Items) return name == "dict" ? Kind::Item : Kind::Other;
        if (in.kind == Kind::Key || in.kind == Kind::Value || in.kind == Kind::Other) return Kind::Other;
        if (name == "key") return Kind::Key;
        return in.hasKey ? ValueIn(in) : Kind::Other;
    }

    Kind ValueIn(const Element& dictionary) const {
        if (dictionary.kind == Kind::Tracks) return Kind::Track;
        if (dictionary.kind == Kind::List && dictionary.key == "Playlist Items") return Kind::Items;
        if (dictionary.kind == Kind::Track) return IsOfTrack(dictionary.key) ? Kind::Value : Kind::Other;
        if (dictionary.kind != Kind::Root) return Kind::Value;
        if (dictionary.key == "Tracks" && !hasTracks_) return Kind::Tracks;
        return dictionary.key == "Playlists" && !hasLists_ ? Kind::Lists : Kind::Other;
    }

    void Begin(std::string_view name, std::string_view) override {
        const Kind kind = KindOf(name);
        rootSeen_ = rootSeen_ || kind == Kind::Root;
        hasTracks_ = hasTracks_ || kind == Kind::Tracks;
        hasLists_ = hasLists_ || kind == Kind::Lists;
        if (kind == Kind::Track) track_ = {};
        if (kind == Kind::List) list_ = {};
        if (kind == Kind::Item) itemHasNumber_ = false;
        if (kind == Kind::Key || kind == Kind::Value) text_.clear();
        if (kind == Kind::Value) valueKind_ = name;
        open_.push_back({kind, {}, false});
    }

    void Text(std::string_view text) override {
        if (open_.empty() || text_.size() > kLongestText) return;
        const Kind kind = open_.back().kind;
        if (kind == Kind::Key || kind == Kind::Value) text_ += text;
    }

    void End() override {
        const Kind kind = open_.back().kind;
        open_.pop_back();
        if (kind == Kind::Track) EndTrack();
        if (kind == Kind::List) EndList();
        if (open_.empty()) return;
        Element& in = open_.back();
        if (kind == Kind::Key) {
            in.key = text_;
            in.hasKey = true;
            return;
        }
        if (kind == Kind::Value && text_.size() <= kLongestText) TakeValue(in.kind, in.key);
        in.hasKey = false;
    }

    void TakeValue(Kind of, std::string_view key) {
        if (of == Kind::Track) TakeTrackValue(key);
        if (of == Kind::List) TakeListValue(key);
        if (of == Kind::Item && key == "Track ID" && !itemHasNumber_) {
            itemHasNumber_ = true;
            if (const auto number = NumberIn(text_)) list_.list.tracks.push_back(*number);
        }
    }

    void TakeTrackValue(std::string_view key) {
        if (const auto field = FieldFor(key)) track_.words.*field = CleanLine(text_);
        if (key == "Track ID") track_.number = NumberIn(text_);
        if (key == "Location") track_.entry = EntryAt(text_, PlaylistEntry::Form::Url);
    }

    void TakeListValue(std::string_view key) {
        if (key == "Name") list_.list.name = CleanLine(text_);
        if ((key == "Master" || key == "Folder") && valueKind_ == "true") list_.isTheUsers = false;
        if (key == "Visible" && valueKind_ == "false") list_.isTheUsers = false;
        if (key == "Distinguished Kind") list_.isTheUsers = false;
    }

    void EndTrack() {
        if (!track_.entry || !track_.number || entries_.IsFull()) return;
        const auto index = static_cast<std::uint32_t>(entries_.Size());
        if (!indices_.try_emplace(*track_.number, index).second) return;
        track_.entry->words = track_.words.Packed();
        entries_.Add(std::move(*track_.entry));
    }

    /// What no user made or sees is left out: the library's own sections, hidden lists, folders of lists.
    void EndList() {
        if (list_.isTheUsers && !list_.list.name.empty() && lists_.size() < kMostLists)
            lists_.push_back(std::move(list_.list));
    }

    struct Track {
        std::optional<PlaylistEntry> entry;
        std::optional<std::uint32_t> number;
        TrackText words;
    };
    struct UnfinishedList {
        ParsedPlaylist::List list;  ///< its tracks are their numbers
        bool isTheUsers = true;
    };

    std::vector<Element> open_;
    bool rootSeen_ = false;
    bool hasTracks_ = false;
    bool hasLists_ = false;
    bool itemHasNumber_ = false;
    std::string text_;
    std::string valueKind_;
    Track track_;
    UnfinishedList list_;
    EntryCollector entries_;
    std::unordered_map<std::uint32_t, std::uint32_t> indices_;  ///< of the tracks, by number
    std::vector<ParsedPlaylist::List> lists_;
    XmlStream stream_{*this};
};

}  // namespace

std::unique_ptr<PlaylistParser> LibraryXmlParser() {
    return std::make_unique<Parser>();
}

}  // namespace sorakaze::player
