// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/NameText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"
#include "player/ForeignText.h"

namespace sorakaze::player {

namespace {

using Words = std::vector<std::string>;

constexpr std::string_view kDash = " - ";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsNumber(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

bool IsYear(std::string_view text) {
    return text.size() == 4 && IsNumber(text) && (text.starts_with("19") || text.starts_with("20"));
}

template <std::size_t N>
bool IsOneOf(const std::array<std::string_view, N>& words, std::string_view word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

Words SplitAt(std::string_view text, std::string_view separator) {
    Words parts;
    for (;;) {
        const auto end = text.find(separator);
        parts.emplace_back(ascii::Trimmed(text.substr(0, end), " "));
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + separator.size());
    }
    std::erase(parts, "");
    return parts;
}

std::string Joined(const Words& parts, std::size_t from) {
    std::string text;
    for (std::size_t i = from; i < parts.size(); ++i)
        text += (text.empty() ? "" : std::string(kDash)) + parts[i];
    return text;
}

/// One blank for each run of blanks and underscores, and one kind of dash.
std::string Readable(std::string text) {
    std::replace(text.begin(), text.end(), '_', ' ');
    for (const std::string_view dash : {" – ", " — ", " ‐ ", " − "}) ReplaceAll(text, dash, kDash);
    std::string readable;
    for (const char c : text)
        if (c != ' ' || !readable.ends_with(' ')) readable += c;
    return std::string(ascii::Trimmed(readable, " "));
}

/// As the address of a video ends, which some programs add to a name: capital and small letters and digits.
bool IsVideoKey(std::string_view text) {
    constexpr std::size_t kLength = 11;
    const auto has = [&](auto test) { return std::any_of(text.begin(), text.end(), test); };
    const auto all = [&](auto test) { return std::all_of(text.begin(), text.end(), test); };
    const auto isSmall = [](char c) { return c >= 'a' && c <= 'z'; };
    const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
    const auto isAny = [&](char c) {
        return isSmall(c) || isCapital(c) || IsDigit(c) || c == '-' || c == ' ';
    };
    return text.size() == kLength && has(isSmall) && has(isCapital) && has(IsDigit) && all(isAny);
}

/// A remark on the file, not on the music.
bool IsRemarkOnFile(std::string_view remark) {
    static constexpr std::array<std::string_view, 27> kWords = {
        "hd",   "hq",    "4k",     "1080p", "720p", "official",   "video",   "audio",    "music",
        "clip", "lyric", "lyrics", "with",  "mv",   "m/v",        "320kbps", "256kbps",  "192kbps",
        "320",  "kbps",  "mp3",    "flac",  "ogg",  "visualizer", "free",    "download", "128kbps"};
    if (IsVideoKey(remark)) return true;
    const Words words = SplitAt(ascii::Lowered(remark), " ");
    return !words.empty() && std::all_of(words.begin(), words.end(),
                                         [](const std::string& word) { return IsOneOf(kWords, word); });
}

void DropRemarksOnFile(std::string& text) {
    for (;;) {
        const char close = text.empty() ? '\0' : text.back();
        if (close != ')' && close != ']') return;
        const auto open = text.rfind(close == ')' ? '(' : '[');
        if (open == std::string::npos || open == 0) return;
        if (!IsRemarkOnFile(std::string_view(text).substr(open + 1, text.size() - open - 2))) return;
        const std::string rest(ascii::Trimmed(std::string_view(text).substr(0, open), " -"));
        if (rest.empty()) return;
        text = rest;
    }
}

/// A name that may begin with a track's number.
struct Numbered {
    enum class Kind {
        No,
        IfOthersAre,  ///< as in "12 Drummers", when the files beside it are numbered, too
        Yes,
    };
    Kind kind = Kind::No;
    int number = 0;
    bool isDashed = false;  ///< "01 - Title"
    std::string rest;
};

Numbered OfNumber(Numbered::Kind kind, std::string_view digits, std::string_view rest,
                  bool isDashed = false) {
    Numbered numbered{kind, 0, isDashed, std::string(ascii::Trimmed(rest, " "))};
    std::from_chars(digits.data(), digits.data() + digits.size(), numbered.number);
    if (numbered.rest.empty()) numbered.kind = Numbered::Kind::No;
    return numbered;
}

/// "1-07 Title": disc and track.
std::optional<Numbered> OfDiscAndTrack(std::string_view name) {
    if (name.size() < 6 || !IsDigit(name[0]) || (name[1] != '-' && name[1] != '.')) return std::nullopt;
    const bool isTrack = IsDigit(name[2]) && IsDigit(name[3]) && !IsDigit(name[4]);
    if (!isTrack || (name[4] != ' ' && name[4] != '.')) return std::nullopt;
    return OfNumber(Numbered::Kind::Yes, name.substr(2, 2), name.substr(5));
}

Numbered NumberOf(std::string_view name) {
    using Kind = Numbered::Kind;
    if (auto ofDisc = OfDiscAndTrack(name)) return *std::move(ofDisc);
    std::size_t count = 0;
    while (count < name.size() && IsDigit(name[count])) ++count;
    if (count == 0 || count > 3 || count == name.size()) return {};
    const std::string_view digits = name.substr(0, count), after = name.substr(count);
    const bool isPadded = digits.front() == '0' && count > 1;
    const bool isUsual = count == 2 || (count == 3 && isPadded);
    if (after.starts_with(kDash)) {
        const auto rest = after.substr(kDash.size());
        const bool isSum = !isPadded && (IsNumber(rest) || count == 3);
        return OfNumber(isSum ? Kind::IfOthersAre : Kind::Yes, digits, rest, true);
    }
    const char separator = after.front();
    const bool isSpaced = after.size() > 1 && after[1] == ' ';
    if (separator == ')' || (separator == '.' && isSpaced))
        return OfNumber(isUsual || separator == ')' ? Kind::Yes : Kind::IfOthersAre, digits, after.substr(1));
    if (separator == '.' || separator == '-')
        return OfNumber(isPadded && isUsual && !isSpaced && !IsDigit(after.size() > 1 ? after[1] : '0')
                            ? Kind::Yes
                            : Kind::IfOthersAre,
                        digits, after.substr(1));
    if (separator == ' ')
        return OfNumber(isPadded && count == 2 ? Kind::Yes : Kind::IfOthersAre, digits, after.substr(1));
    return {};
}

/// Whether most of the files beside it begin with numbers, and one of them with the number before or after.
bool AreOthersNumbered(const std::string& name, int number, const Words& beside) {
    int others = 0, numbered = 0;
    bool hasNeighbour = false;
    for (const std::string& other : beside) {
        const std::string readable = Readable(NameWithoutEnding(other));
        if (readable == name) continue;
        ++others;
        const Numbered its = NumberOf(readable);
        if (its.kind == Numbered::Kind::No) continue;
        ++numbered;
        hasNeighbour = hasNeighbour || its.number == number - 1 || its.number == number + 1;
    }
    return hasNeighbour && 3 * numbered >= 2 * others;
}

/// Whether most of the files beside it are called "01 - Artist - Title", too.
bool DoOthersNameArtists(const Words& beside) {
    std::size_t withArtist = 0;
    for (const std::string& other : beside)
        withArtist += SplitAt(NumberOf(Readable(NameWithoutEnding(other))).rest, kDash).size() > 1 ? 1 : 0;
    return 2 * withArtist > beside.size();
}

/// "CD1", "Disc 2": a folder within an album.
bool IsDisc(const std::string& folder) {
    const std::string name = ascii::Lowered(folder);
    for (const std::string_view word : {"cd", "disc", "disk", "disque"}) {
        if (name.starts_with(word) &&
            IsNumber(ascii::Trimmed(std::string_view(name).substr(word.size()), " ")))
            return true;
    }
    return false;
}

/// Folders of many artists, and of music that was sorted by other things than artists.
bool IsManyArtists(std::string_view folder) {
    static constexpr std::array<std::string_view, 34> kNames = {"various artists",
                                                                "various",
                                                                "va",
                                                                "v.a.",
                                                                "compilations",
                                                                "compilation",
                                                                "soundtracks",
                                                                "soundtrack",
                                                                "ost",
                                                                "samplers",
                                                                "unknown artist",
                                                                "unknown",
                                                                "music",
                                                                "musik",
                                                                "downloads",
                                                                "mp3",
                                                                "flac",
                                                                "audio",
                                                                "songs",
                                                                "mixes",
                                                                "playlists",
                                                                "games",
                                                                "bgm",
                                                                "sounds",
                                                                "rock",
                                                                "pop",
                                                                "jazz",
                                                                "classical",
                                                                "klassik",
                                                                "albums",
                                                                "singles",
                                                                "rips",
                                                                "new",
                                                                "data"};
    return IsOneOf(kNames, ascii::Lowered(folder));
}

bool IsUnknown(const std::string& folder) {
    return ascii::Lowered(folder).starts_with("unknown");
}

/// "1997 - Album", "(1997) Album", "Album (1997)", "Album [FLAC]": without what isn't its name.
std::string AlbumOf(std::string folder) {
    DropRemarksOnFile(folder);
    const auto bracket =
        folder.size() > 6 ? folder.rfind(folder.back() == ']' ? '[' : '(') : std::string::npos;
    if (bracket != std::string::npos && bracket > 0 && folder.size() - bracket == 6 &&
        IsYear(std::string_view(folder).substr(bracket + 1, 4)))
        folder.resize(bracket);
    const std::string_view text = ascii::Trimmed(folder, " ");
    const bool inBrackets = text.starts_with('(') || text.starts_with('[');
    const auto year = text.substr(inBrackets ? 1 : 0, 4);
    const auto rest = text.substr(std::min<std::size_t>(text.size(), inBrackets ? 6 : 4));
    const bool isApart = rest.starts_with(' ') && ascii::Trimmed(rest, " -").size() > 0;
    const bool isYear = IsYear(year) && isApart && (inBrackets || rest.starts_with(kDash));
    return std::string(isYear ? ascii::Trimmed(rest, " -") : text);
}

/// What the folders of a numbered file say: "Artist/Album" or "Artist - Album".
TrackText OfFolders(const std::filesystem::path& file, const std::filesystem::path& root) {
    TrackText text;
    if (root.empty()) return text;
    Words folders;
    for (const auto& part : file.parent_path().lexically_relative(root))
        folders.push_back(Readable(CleanLine(part.string())));
    std::erase(folders, ".");
    if (folders.size() > 1 && IsDisc(folders.back())) folders.pop_back();
    if (folders.empty() || folders.front() == "..") return text;
    const std::string& album = folders.back();
    const Words parts = SplitAt(album, kDash);
    if (parts.size() == 2 && !IsNumber(parts[0])) {
        text.artist = IsManyArtists(parts[0]) ? "" : parts[0];
        text.album = AlbumOf(parts[1]);
    } else if (parts.size() == 3 && IsYear(parts[1])) {
        text.artist = IsManyArtists(parts[0]) ? "" : parts[0];
        text.album = AlbumOf(parts[2]);
    } else if (folders.size() > 1 && !IsManyArtists(album)) {
        const std::string& artist = folders[folders.size() - 2];
        if (!IsManyArtists(artist)) text.artist = artist;
        if (!IsUnknown(album)) text.album = AlbumOf(album);
    }
    return text;
}

/// Words that name a work and not an artist, and plain numbers.
bool IsNoArtist(const std::string& name) {
    static constexpr std::array<std::string_view, 8> kOfWorks = {"no.", "op.",  "bwv",   "kv",
                                                                 "act", "part", "scene", "movement"};
    if (IsNumber(name)) return true;
    const Words words = SplitAt(ascii::Lowered(name), " ");
    return std::any_of(words.begin(), words.end(),
                       [](const std::string& word) { return IsOneOf(kOfWorks, word); });
}

/// "Track 7" in the place of a number.
bool IsTrackWord(const std::string& part) {
    const Words words = SplitAt(ascii::Lowered(part), " ");
    return words.size() == 2 && (words[0] == "track" || words[0] == "titel" || words[0] == "piste") &&
           IsNumber(words[1]);
}

bool IsSame(const std::string& a, const std::string& b) {
    const std::string key = ComparableText(a);
    return !key.empty() && key == ComparableText(b);
}

/// From the parts of a name that are separated by dashes.
void TakeParts(Words parts, bool foldersDecide, const std::string& artistOfFolder, TrackText& text) {
    if (parts.size() > 1 && IsTrackWord(parts.front())) parts.erase(parts.begin());
    if (parts.size() == 1 || IsNoArtist(parts.front())) {
        text.title = Joined(parts, 0);
        return;
    }
    if (IsSame(parts.front(), artistOfFolder) || !foldersDecide) {
        text.artist = parts.front();
        parts.erase(parts.begin());
        if (parts.size() == 3 && IsNumber(parts[1])) {
            text.album = parts[0];
            parts.erase(parts.begin());
        }
        const bool beginsWithAlbum = parts.size() > 1 && IsSame(parts[0], text.album);
        const bool beginsWithNumber = parts.size() > 1 && IsNumber(parts[0]) && parts[0].size() < 4;
        if (beginsWithAlbum || beginsWithNumber) parts.erase(parts.begin());
        if (beginsWithAlbum && parts.size() > 1 && IsNumber(parts[0])) parts.erase(parts.begin());
    }
    text.title = Joined(parts, 0);
}

}  // namespace

std::string NameWithoutEnding(const std::filesystem::path& file) {
    const std::string ending = file.extension().string();
    constexpr std::size_t kLongestEnding = 6;
    // "Vol. 2" has no ending.
    const bool isEnding = ending.size() <= kLongestEnding && ending.find(' ') == std::string::npos;
    return CleanLine((isEnding ? file.stem() : file.filename()).string());
}

std::string ComparableText(std::string_view text) {
    const std::string folded = unicode::FoldedCase(CleanLine(text));
    std::string key;
    for (std::size_t at = 0; at < folded.size();) {
        const auto [code, size] = utf8::Read(folded, at);
        if (unicode::IsAlphanumeric(code)) key.append(folded, at, size);
        at += size;
    }
    return key;
}

TrackText TextFromPath(const std::filesystem::path& file, const std::filesystem::path& root,
                       const NamesBeside& beside) {
    const std::string whole = NameWithoutEnding(file);
    const std::string name = Readable(whole);
    Numbered numbered = NumberOf(name);
    if (numbered.kind == Numbered::Kind::IfOthersAre && beside &&
        AreOthersNumbered(name, numbered.number, beside()))
        numbered.kind = Numbered::Kind::Yes;
    const bool isNumbered = numbered.kind == Numbered::Kind::Yes;
    TrackText text;
    if (isNumbered) text = OfFolders(file, root);
    std::string rest = isNumbered ? numbered.rest : name;
    DropRemarksOnFile(rest);
    // In an artist's folder a dash is mostly part of the title, as in "01 Title - Live".
    const bool foldersDecide =
        !text.artist.empty() && !(numbered.isDashed && beside && DoOthersNameArtists(beside()));
    const std::string artistOfFolder = text.artist;
    const Words parts = SplitAt(rest, kDash);
    if (!parts.empty()) TakeParts(parts, foldersDecide, artistOfFolder, text);
    if (text.title.empty()) text.title = name.empty() ? whole : name;
    return text;
}

}  // namespace sorakaze::player
