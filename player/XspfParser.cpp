// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

#include "base/Ascii.h"
#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"
#include "player/XmlStream.h"

namespace sorakaze::player {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool HasScheme(std::string_view url) {
    const auto colon = url.find(':');
    return colon != std::string_view::npos && colon >= 2 && colon < url.find('/');
}

/// A URL reference seen from `base`, by the rules for URLs but for "." and "..", which the file system knows
/// itself.
std::string Resolved(std::string_view base, std::string_view reference) {
    if (base.empty() || HasScheme(reference)) return std::string(reference);
    std::size_t root = 0;  // where the path of the base begins
    if (HasScheme(base)) {
        root = base.find(':') + 1;
        if (base.substr(root).starts_with("//")) root = std::min(base.size(), base.find('/', root + 2));
    }
    if (reference.starts_with('/')) return std::string(base.substr(0, root)) + std::string(reference);
    const auto slash = base.rfind('/');
    const std::size_t end = slash == std::string_view::npos || slash < root ? root : slash + 1;
    std::string whole(base.substr(0, end));
    if (root > 0 && end == root) whole += '/';
    return whole.append(reference);
}

/// A base that is too long for any path is none.
std::string BaseWithin(const std::string& outer, std::string_view base) {
    base = ascii::Trimmed(base, kBlanks);
    return outer.size() + base.size() > kLongestText ? outer : Resolved(outer, base);
}

class Parser final : public PlaylistParser, private XmlVisitor {
  public:
    bool Read(std::string_view piece) override { return stream_.Read(piece) && !entries_.IsFull(); }

    ParsedPlaylist Finish() override {
        if (std::any_of(open_.begin(), open_.end(), [](const Element& e) { return e.kind == Kind::Track; }))
            EndTrack();
        const bool isFull = entries_.IsFull();
        return {entries_.Take(), false, {}, false, addresses_, isFull};
    }

  private:
    enum class Kind { Playlist, List, Track, Title, Creator, Album, Duration, Location, Other };
    struct Element {
        Kind kind;
        std::string base;  ///< what locations in it are relative to
    };

    Kind KindOf(std::string_view name) const {
        if (open_.empty()) return name == "playlist" ? Kind::Playlist : Kind::Other;
        switch (open_.back().kind) {
            case Kind::Playlist:
                return name == "trackList" ? Kind::List : Kind::Other;
            case Kind::List:
                return name == "track" ? Kind::Track : Kind::Other;
            case Kind::Track:
                if (name == "title") return Kind::Title;
                if (name == "creator") return Kind::Creator;
                if (name == "album") return Kind::Album;
                if (name == "duration") return Kind::Duration;
                return name == "location" ? Kind::Location : Kind::Other;
            default:
                return Kind::Other;
        }
    }

    void Begin(std::string_view name, std::string_view base) override {
        const Kind kind = KindOf(name);
        // Nobody asks for the base of what isn't read.
        const std::string outer = open_.empty() || kind == Kind::Other ? "" : open_.back().base;
        open_.push_back({kind, kind == Kind::Other ? "" : BaseWithin(outer, base)});
        if (kind != Kind::Other) text_.clear();
    }

    void Text(std::string_view text) override {
        if (open_.empty() || open_.back().kind == Kind::Other || text_.size() > kLongestText) return;
        text_ += text;
    }

    void End() override {
        const Element element = std::move(open_.back());
        open_.pop_back();
        const std::string_view value = ascii::Trimmed(text_, kBlanks);
        const bool isText = value.size() <= kLongestText;
        if (element.kind == Kind::Title && isText) words_.title = CleanLine(value);
        if (element.kind == Kind::Creator && isText) words_.artist = CleanLine(value);
        if (element.kind == Kind::Album && isText) words_.album = CleanLine(value);
        if (element.kind == Kind::Duration)
            std::from_chars(value.data(), value.data() + value.size(), milliseconds_);
        hasPlace_ = hasPlace_ || (element.kind == Kind::Location && !value.empty());
        if (element.kind == Kind::Location && !entry_ && !value.empty() && isText) {
            const std::string place = Resolved(element.base, value);
            entry_ = EntryAt(place, PlaylistEntry::Form::Url);
            isAddress_ = !entry_ && IsNetworkAddress(place);
        }
        if (element.kind == Kind::Track) EndTrack();
        text_.clear();
    }

    /// A track whose places aren't among the user's files is none. One without a place is known by its title.
    void EndTrack() {
        if (!hasPlace_ && !words_.title.empty()) entry_.emplace().form = PlaylistEntry::Form::Nowhere;
        if (entry_) {
            entry_->milliseconds = milliseconds_;
            entry_->words = words_.Packed();
            entries_.Add(std::move(*entry_));
        } else if (isAddress_) {
            ++addresses_;
        }
        isAddress_ = false;
        entry_.reset();
        words_ = {};
        hasPlace_ = false;
        milliseconds_ = 0;
    }

    std::vector<Element> open_;
    std::string text_;  ///< of the innermost element
    std::optional<PlaylistEntry> entry_;
    bool hasPlace_ = false;
    std::uint32_t milliseconds_ = 0;
    TrackText words_;
    EntryCollector entries_;
    std::size_t addresses_ = 0;
    bool isAddress_ = false;
    XmlStream stream_{*this};
};

}  // namespace

std::unique_ptr<PlaylistParser> XspfParser() {
    return std::make_unique<Parser>();
}

}  // namespace sorakaze::player
