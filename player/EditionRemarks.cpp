// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/EditionRemarks.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze::player {

namespace {

using Words = std::vector<std::string_view>;

template <std::size_t N>
bool IsOneOf(const std::string_view (&words)[N], std::string_view word) {
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

/// Says by itself that a remark is about an edition.
bool IsClearWord(std::string_view word) {
    static constexpr std::string_view kWords[] = {
        "remaster",    "remastered",    "remasters",    "remastering", "remasterizado",
        "remasterisé", "remasterizada", "remasterisée", "remastérisé", "explicit",
        "mono",        "stereo",        "reissue",      "uncensored"};
    return IsOneOf(kWords, word);
}

/// Says so within brackets only: after a dash it may be the name itself.
bool IsClearInBrackets(std::string_view word) {
    static constexpr std::string_view kWords[] = {
        "clean", "censored", "hd",    "hq",         "4k",         "official", "deluxe", "expanded",
        "video", "audio",    "lyric", "visualizer", "visualiser", "lyrics",   "bonus",  "amended"};
    return IsOneOf(kWords, word);
}

/// What an edition is a form of: with a word before it that says of which, as in "Radio Edit".
bool IsForm(std::string_view word) {
    static constexpr std::string_view kWords[] = {"version", "versions",   "edition",    "edit",   "mix",
                                                  "track",   "tracks",     "video",      "audio",  "release",
                                                  "master",  "visualizer", "visualiser", "content"};
    return IsOneOf(kWords, word);
}

bool NamesAnEdition(std::string_view word) {
    static constexpr std::string_view kWords[] = {
        "radio",      "single",        "album",    "original", "official",    "deluxe",
        "expanded",   "limited",       "special",  "bonus",    "anniversary", "collector's",
        "collectors", "legacy",        "clean",    "censored", "standard",    "main",
        "lp",         "lyric",         "lyrics",   "japanese", "japan",       "us",
        "uk",         "international", "digital",  "super",    "music",       "amended",
        "enhanced",   "complete",      "parental", "advisory", "exclusive",   "hd"};
    return IsOneOf(kWords, word);
}

/// May be in any remark, and says nothing by itself.
bool IsFiller(std::string_view word) {
    static constexpr std::string_view kWords[] = {
        "the",       "a",       "in",     "of",         "and", "&",   "+",     "new",
        "digitally", "digital", "high",   "resolution", "hi",  "res", "24",    "bit",
        "24bit",     "96khz",   "192khz", "hq",         "hd",  "4k",  "1080p", "itunes"};
    if (IsOneOf(kWords, word)) return true;
    const bool isOrdinal =
        word.size() > 2 && (word.ends_with("th") || word.ends_with("st") || word.ends_with("nd"));
    const std::string_view digits = isOrdinal ? word.substr(0, word.size() - 2) : word;
    return std::all_of(digits.begin(), digits.end(), ascii::IsDigit) && (isOrdinal || digits.size() == 4);
}

Words WordsOf(std::string_view text) {
    Words words;
    for (constexpr std::string_view kBetween = " ,.;/-:"; !text.empty();) {
        text.remove_prefix(std::min(text.find_first_not_of(kBetween), text.size()));
        const auto end = std::min(text.find_first_of(kBetween), text.size());
        if (end > 0) words.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return words;
}

enum class Place { Brackets, Dash };

bool IsEditionRemark(std::string_view remark, Place place) {
    const std::string lowered = ascii::Lowered(remark);
    const Words words = WordsOf(lowered);
    const bool isAllOfThem = std::all_of(words.begin(), words.end(), [](std::string_view word) {
        return IsClearWord(word) || IsClearInBrackets(word) || IsForm(word) || NamesAnEdition(word) ||
               IsFiller(word);
    });
    if (!isAllOfThem) return false;
    const auto has = [&](bool (*test)(std::string_view)) {
        return std::any_of(words.begin(), words.end(), test);
    };
    if (has(IsClearWord) || (has(IsForm) && has(NamesAnEdition))) return true;
    return place == Place::Brackets && has(IsClearInBrackets);
}

bool HasName(std::string_view text) {
    while (!text.empty()) {
        const auto character = utf8::Read(text, 0);
        if (unicode::IsAlphanumeric(character.code)) return true;
        text.remove_prefix(character.size);
    }
    return false;
}

/// Takes the remarks in brackets out. False if there is none.
bool TakeBrackets(std::string& name) {
    for (auto open = name.find('['); open != std::string::npos; open = name.find('[', open + 1)) {
        const auto close = name.find(']', open);
        if (close == std::string::npos) return false;
        if (!IsEditionRemark(std::string_view(name).substr(open + 1, close - open - 1), Place::Brackets))
            continue;
        const bool isBetweenBlanks = open > 0 && name[open - 1] == ' ';
        name.erase(isBetweenBlanks ? open - 1 : open, close + 1 - open + (isBetweenBlanks ? 1 : 0));
        return true;
    }
    return false;
}

/// Albums of one song, and of a few, as shops name them.
bool IsFormat(std::string_view remark) {
    const std::string lowered = ascii::Lowered(remark);
    return lowered == "single" || lowered == "ep";
}

struct Separator {
    std::size_t at = std::string_view::npos;
    std::size_t size = 0;
};

/// The last of the separators that a remark follows.
Separator LastSeparator(std::string_view name) {
    // No remark is longer.
    constexpr std::size_t kLongest = 100;
    const std::size_t begin = name.size() - std::min(name.size(), kLongest);
    static constexpr std::string_view kSeparators[] = {" - ", " – ", " — ", " / ", "; ", " | "};
    Separator last;
    for (const std::string_view separator : kSeparators) {
        const auto at = name.substr(begin).rfind(separator);
        if (at != std::string_view::npos && (last.size == 0 || begin + at > last.at))
            last = {begin + at, separator.size()};
    }
    return last;
}

bool IsYear(std::string_view text) {
    return text.size() == 4 && (text.starts_with("19") || text.starts_with("20")) &&
           std::all_of(text.begin(), text.end(), ascii::IsDigit);
}

/// Takes the remarks at the end out, as in "Song - Live in Rome / 2011 - Remaster".
bool TakeDashes(std::string& name, NameKind kind) {
    bool found = false;
    for (;;) {
        const auto [at, size] = LastSeparator(name);
        if (size == 0) return found;
        const std::string_view remark = std::string_view(name).substr(at + size);
        const bool isFormat = kind == NameKind::Album && IsFormat(remark);
        if (!isFormat && !(found && IsYear(remark)) && !IsEditionRemark(remark, Place::Dash)) return found;
        name.resize(at);
        found = true;
    }
}

}  // namespace

std::string WithoutEditionRemarks(const std::string& name, NameKind kind) {
    std::string rest = name;
    while (TakeBrackets(rest) || TakeDashes(rest, kind)) {
    }
    return HasName(rest) ? std::string(ascii::Trimmed(rest, " ")) : name;
}

}  // namespace sorakaze::player
