// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/reading/Rules.h"

namespace sorakaze::reading {
namespace {

using Kind = Token::Kind;

constexpr std::string_view kGermanKeys =
    " a as ais b c ces cis d des dis e es eis f fes fis g ges gis h his ";
/// What follows a key in a title, so that "a minor" isn't a small thing.
constexpr std::string_view kAfterKeys = " op opus no nr k kv bwv rv d hwv by from for and with concerto ";

std::string Capital(std::string_view letter) {
    return {static_cast<char>(letter[0] - 'a' + 'A')};
}

/// "minor" or "major" of the word's abbreviation; empty for another word.
std::string_view EnglishMode(std::string_view word) {
    if (word == "minor" || word == "min") return "minor";
    return word == "major" || word == "maj" ? "major" : std::string_view();
}

/// A key at a word's start, without "-": its note with sharp or flat, and how many letters of the word it
/// takes. No letters if there is none.
struct Note {
    std::string said;
    std::size_t letters = 0;
};

Note EnglishNote(std::string_view word) {
    if (word.empty() || word[0] < 'a' || word[0] > 'g') return {};
    const std::string name = Capital(word);
    const std::string_view rest = word.substr(1);
    if (rest.starts_with("sharp")) return {name + " sharp", 6};
    if (rest.starts_with("flat")) return {name + " flat", 5};
    if (rest == "b") return {name + " flat", 2};
    return {name, 1};
}

bool ReadEnglishAt(Sentence& sentence, std::size_t index) {
    const Note note = EnglishNote(sentence.At(index).lower);
    if (note.letters == 0) return false;
    const std::string_view rest = std::string_view(sentence.At(index).lower).substr(note.letters);
    if (!rest.empty()) {  // "cminor", "bflatmajor": the hyphen is gone
        const std::string_view mode = EnglishMode(rest);
        if (mode != rest || mode.empty()) return false;
        sentence.Replace(index, Kind::Word, note.said + (note.said == "A" ? "-" : " ") + std::string(mode));
        return true;
    }
    std::string said = note.said;
    std::size_t last = index;
    std::size_t next = sentence.Next(index);
    if (sentence.IsMark(next, "-")) next = sentence.Next(next);
    if (sentence.IsMark(index + 1, "#") || sentence.IsMark(index + 1, "♯") ||
        sentence.IsMark(index + 1, "♭")) {
        said += sentence.IsMark(index + 1, "♭") ? " flat" : " sharp";
        last = index + 1;
    } else if (note.letters == 1 && (sentence.IsWord(next, "flat") || sentence.IsWord(next, "sharp"))) {
        said += " " + sentence.At(next).lower;
        last = next;
    }
    while (sentence.IsMark(sentence.Next(last), "-")) last = sentence.Next(last);
    next = sentence.Next(last);
    const std::string_view mode = EnglishMode(sentence.At(next).lower);
    if (mode.empty() || !sentence.Is(next, Kind::Word)) return false;
    const std::size_t after = sentence.Next(next);
    const bool ends = after == Sentence::kNone || !sentence.Is(after, Kind::Word) ||
                      sentence.IsEdge(next + 1) || IsOneOf(sentence.At(after).lower, kAfterKeys);
    if (said == "A" && !(sentence.IsWord(sentence.Previous(index), "in") && ends) && last == index)
        return false;
    if (said.size() == 1 && !ends && !sentence.IsWord(sentence.Previous(index), "in")) return false;
    for (std::size_t i = index + 1; i <= next; ++i) sentence.Remove(i);
    // Voices take "A minor" for the article.
    sentence.Replace(index, Kind::Word, said + (said == "A" ? "-" : " ") + std::string(mode));
    return true;
}

bool ReadGermanAt(Sentence& sentence, std::size_t index) {
    const std::string& word = sentence.At(index).lower;
    for (const std::string_view mode : {std::string_view("moll"), std::string_view("dur")}) {
        const std::string said = mode == "moll" ? " Moll" : " Dur";
        const auto key = [](std::string_view note) { return Capital(note) + std::string(note.substr(1)); };
        if (word.ends_with(mode) && IsOneOf(word.substr(0, word.size() - mode.size()), kGermanKeys)) {
            sentence.Replace(index, Kind::Word, key(word).substr(0, word.size() - mode.size()) + said);
            return true;
        }
        if (!IsOneOf(word, kGermanKeys)) continue;
        std::size_t next = sentence.Next(index);
        if (sentence.IsMark(next, "-")) next = sentence.Next(next);
        if (!sentence.IsWord(next, mode)) continue;
        const std::string note = key(word);
        for (std::size_t i = index + 1; i <= next; ++i) sentence.Remove(i);
        sentence.Replace(index, Kind::Word, note + said);
        return true;
    }
    return false;
}

}  // namespace

void ReadKeys(Sentence& sentence, Main voice) {
    for (std::size_t i = 0; i < sentence.Size(); ++i) {
        if (!sentence.Is(i, Kind::Word)) continue;
        const Main main = LanguageAt(sentence, i, voice);
        // A title's language isn't the voice's.
        if (main == Main::English || main == Main::German)
            ReadGermanAt(sentence, i) || ReadEnglishAt(sentence, i);
    }
}

}  // namespace sorakaze::reading
