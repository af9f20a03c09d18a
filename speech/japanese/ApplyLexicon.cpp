// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/ApplyLexicon.h"

#include <algorithm>
#include <utility>

#include "speech/japanese/Characters.h"
#include "speech/japanese/Counters.h"
#include "speech/japanese/GivenNames.h"
#include "speech/japanese/Grammar.h"
#include "speech/japanese/Lexicon.h"
#include "speech/japanese/Numbers.h"

namespace sorakaze::japanese {
namespace {

/// Whether an entry fits between the morphemes around it, which are null at the sentence's ends.
bool Suits(const Entry& entry, const Morpheme* before, const Morpheme* after) {
    // Next to a kanji that may belong to it, a name is somebody else's: 遠藤実 in 遠藤実鈴.
    if (before && IsKanji(entry.surface.front()) && IsUnknownKanji(*before)) return false;
    if (after && IsKanji(entry.surface.back()) && after->surface.size() == 1 &&
        (IsUnknownKanji(*after) || IsGivenName(after->grammar)))
        return false;
    // The dictionary knows counters where the number is there.
    if (before && !CounterReading(entry.surface).empty()) return false;
    // 四百八百万, 八百万円
    if (before && IsKanjiNumber(*before) && IsKanjiNumerals(entry.surface.substr(0, 1))) return false;
    return !after || !IsKanjiNumerals(entry.surface) || !(IsKanjiNumber(*after) || IsCounter(after->grammar));
}

/// True for what the dictionary may take for the end of another word: 遠藤実は, where it sees 実は.
bool IsOneParticle(std::u32string_view text) {
    return text.size() == 1 &&
           std::u32string_view(U"はとのをにがもへでや").find(text) != std::u32string_view::npos;
}

/// Puts entries in the place of a sentence's morphemes.
class Replacement {
  public:
    explicit Replacement(const std::vector<Morpheme>& morphemes) : morphemes_(morphemes) {
        for (const Morpheme& morpheme : morphemes) {
            begins_.push_back(sentence_.size());
            sentence_ += morpheme.surface;
        }
        begins_.push_back(sentence_.size());
    }

    std::vector<Morpheme> Morphemes() {
        std::vector<Morpheme> result;
        while (at_ < morphemes_.size()) {
            if (const auto entry = EntryHere()) {
                Add(result, *entry);
            } else if (const std::u32string name = ComposedNameHere(); !name.empty()) {
                Add(result, {std::u32string_view(sentence_).substr(begins_[at_], 2), name});
            } else {
                result.push_back(morphemes_[at_++]);
            }
        }
        return result;
    }

  private:
    std::size_t MorphemeAfter(const Entry& entry) const {
        const auto end =
            std::lower_bound(begins_.begin(), begins_.end(), begins_[at_] + entry.surface.size());
        return static_cast<std::size_t>(end - begins_.begin());
    }
    /// What the last replaced morpheme holds beyond the entry.
    std::u32string_view RestAfter(const Entry& entry) const {
        const std::size_t end = begins_[at_] + entry.surface.size();
        return std::u32string_view(sentence_).substr(end, begins_[MorphemeAfter(entry)] - end);
    }

    std::optional<Entry> EntryHere() const {
        const Morpheme* before = at_ > 0 ? &morphemes_[at_ - 1] : nullptr;
        const auto suits = [&](const Entry& entry) {
            const std::size_t next = MorphemeAfter(entry);
            return (RestAfter(entry).empty() || IsOneParticle(RestAfter(entry))) &&
                   Suits(entry, before, next < morphemes_.size() ? &morphemes_[next] : nullptr);
        };
        const std::u32string_view text = std::u32string_view(sentence_).substr(begins_[at_]);
        if (const auto entry = LongestEntry(LexiconEntries(), text, suits)) return entry;
        if (!before || !IsFamilyName(before->grammar)) return {};
        return LongestEntry(GivenNames(), text, [&](const Entry& entry) {
            const std::size_t end = begins_[at_] + entry.surface.size();
            return suits(entry) && (end == sentence_.size() || !IsKanji(sentence_[end]));
        });
    }

    /// A given name that the dictionary splits into single kanji.
    std::u32string ComposedNameHere() const {
        const bool isSplitName =
            at_ > 0 && at_ + 1 < morphemes_.size() && IsFamilyName(morphemes_[at_ - 1].grammar) &&
            morphemes_[at_].surface.size() == 1 && morphemes_[at_ + 1].surface.size() == 1 &&
            (at_ + 2 == morphemes_.size() || !IsKanji(morphemes_[at_ + 2].surface[0]));
        return isSplitName ? ComposedGivenName(std::u32string_view(sentence_).substr(begins_[at_], 2))
                           : std::u32string();
    }

    void Add(std::vector<Morpheme>& result, const Entry& entry) {
        result.push_back({std::u32string(entry.surface),
                          std::u32string(entry.reading),
                          {},
                          {U"名詞", U"固有名詞", {}, {}, {}, {}},
                          true});
        const std::u32string rest(RestAfter(entry));
        if (!rest.empty()) result.push_back({rest, rest, {}, {U"助詞", {}, {}, {}, {}, {}}, false});
        at_ = MorphemeAfter(entry);
    }

    const std::vector<Morpheme>& morphemes_;
    std::u32string sentence_;
    std::vector<std::size_t> begins_;  ///< of each morpheme, in characters, and the sentence's end
    std::size_t at_ = 0;
};

}  // namespace

std::vector<Morpheme> ApplyLexicon(const std::vector<Morpheme>& morphemes) {
    return Replacement(morphemes).Morphemes();
}

}  // namespace sorakaze::japanese
