// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads Japanese sentences, for SayKotoeri and for the Japanese voice of `say`: the same name is read the
// same way by both. Not thread-safe.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "speech/japanese/Dictionary.h"
#include "speech/japanese/Lexicon.h"

namespace sorakaze::japanese {

/// A word or part of one, or a number with its counter.
struct ReadMorpheme {
    std::u32string surface;
    /// Hiragana, with blanks between the words of a name. A reading, not a pronunciation: the particle は
    /// stays は. What has no reading stays as it is.
    std::u32string reading;
    /// Katakana as it is spoken; empty if the reading isn't the dictionary's.
    std::u32string pronunciation;
    Grammar grammar;
    bool joinsPrevious = false;  ///< belongs to the same word as the one before it
};

/// Whether digits are read or left for a voice of another language.
enum class Digits { Kept, Read };

class Reader {
  public:
    explicit Reader(Dictionary dictionary, UseLexicon lexicon = UseLexicon::Yes)
        : dictionary_(std::move(dictionary)), lexicon_(lexicon) {}

    /// Reads a sentence of kana, kanji and digits, as CleanText returns them. It may also hold decimal points
    /// and "%" after digits. Any length; time is linear in it.
    std::vector<ReadMorpheme> Read(std::u32string_view sentence, Digits digits,
                                   Start start = Start::OfText) const;

  private:
    std::vector<Morpheme> Morphemes(std::u32string_view sentence, Start start) const;

    Dictionary dictionary_;
    UseLexicon lexicon_;
};

/// The reader with the dictionary in the folder `ipadic` next to the running program, or with the machine's.
/// `warn` is told why the former can't be used. Throws NoDictionary.
Reader OpenReader(const std::function<void(const char*)>& warn);

}  // namespace sorakaze::japanese
