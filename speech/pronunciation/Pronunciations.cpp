// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/pronunciation/Pronunciations.h"

#include <algorithm>
#include <tuple>

#include "base/Ascii.h"
#include "speech/pronunciation/SpelledText.h"

namespace sorakaze::speech {
namespace {

/// Languages without blanks between words: a name of several characters counts wherever it is.
bool IsWithoutBlanks(char32_t code) {
    return code >= 0x3005 && code < 0xA000;
}

/// How well an entry's language fits: 0 is best. Nothing fits where this is above 2.
std::size_t Distance(const std::string& entry, const std::string& voice) {
    if (voice.empty()) return entry.empty() ? 0 : 1;
    if (entry == voice) return 0;
    if (entry.empty()) return 2;
    return voice.starts_with(entry + "-") ? 1 : 3;
}

}  // namespace

Pronunciations::Pronunciations(const std::vector<PronunciationFile>& files, std::string_view language,
                               Which which) {
    const std::string voice = ascii::Lowered(language);
    std::size_t file = 0;
    for (const PronunciationFile& one : files) {
        std::size_t later = one.entries.size();
        for (const PronunciationEntry& entry : one.entries) {
            --later;
            const std::size_t distance = Distance(entry.language, voice);
            if (distance > 2) continue;
            if (which == Which::WithShellCharacters && entry.name.find_first_of("$`") == entry.name.npos)
                continue;
            SpelledText name(entry.name);
            while (name.characters.ends_with(U' ')) name.characters.pop_back();
            const bool isLong = name.characters.size() > 1;
            const bool startsAnywhere = isLong && IsWithoutBlanks(name.characters.front());
            const bool endsAnywhere = isLong && IsWithoutBlanks(name.characters.back());
            const std::size_t rank = (file * 3 + distance) * kMostPronunciations + later;
            names_.push_back(
                {std::move(name.characters), entry.spelling, rank, startsAnywhere, endsAnywhere});
        }
        ++file;
    }
    std::sort(names_.begin(), names_.end(), [](const Name& a, const Name& b) {
        return std::tie(a.characters, a.rank) < std::tie(b.characters, b.rank);
    });
    names_.erase(std::unique(names_.begin(), names_.end(),
                             [](const Name& a, const Name& b) { return a.characters == b.characters; }),
                 names_.end());
}

const Pronunciations::Name* Pronunciations::Longest(const SpelledText& text, std::size_t at) const {
    const Name* longest = nullptr;
    auto begin = names_.begin(), end = names_.end();
    const bool startsWord = text.IsBetweenWords(at);
    for (std::size_t depth = 0; begin != end && at + depth < text.characters.size(); ++depth) {
        const char32_t code = text.characters[at + depth];
        // All in the range have the same first characters, and the shortest is the first.
        begin = std::partition_point(begin, end, [&](const Name& name) {
            return name.characters.size() <= depth || name.characters[depth] < code;
        });
        end = std::partition_point(begin, end,
                                   [&](const Name& name) { return name.characters[depth] == code; });
        if (begin == end || begin->characters.size() != depth + 1) continue;
        const bool starts = startsWord || begin->startsAnywhere;
        if (starts && (begin->endsAnywhere || text.IsBetweenWords(at + depth + 1))) longest = &*begin;
    }
    return longest;
}

std::string Pronunciations::Apply(std::string_view text) const {
    if (names_.empty()) return std::string(text);
    const SpelledText spelled(text);
    std::string result;
    std::size_t copied = 0;  // bytes of the text
    for (std::size_t at = 0; at < spelled.characters.size();) {
        const Name* name = Longest(spelled, at);
        if (!name) {
            ++at;
            continue;
        }
        result += text.substr(copied, spelled.begins[at] - copied);
        result += name->spelling;
        at += name->characters.size();
        copied = spelled.ends[at - 1];
    }
    result += text.substr(copied);
    return result;
}

}  // namespace sorakaze::speech
