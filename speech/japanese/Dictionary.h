// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The morphological dictionary, the only place that includes MeCab together with LikeliestPath: divides a
// Japanese sentence into morphemes and knows how each is read.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace sorakaze::japanese {

/// There is no usable dictionary. The message is one line that says what to do.
class NoDictionary : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What readings and word boundaries depend on.
struct Grammar {
    std::u32string kind;         ///< 名詞, 動詞, ...
    std::u32string subkind;      ///< 固有名詞, 数, 接尾, ...
    std::u32string third;        ///< 人名, 助数詞, ...
    std::u32string fourth;       ///< 姓, 名, ...
    std::u32string conjugation;  ///< 五段・カ行イ音便, 特殊・ダ, ...
    std::u32string form;         ///< 連用形, ...
};

struct Morpheme {
    std::u32string surface;
    std::u32string reading;        ///< katakana; empty if the dictionary doesn't know the word
    std::u32string pronunciation;  ///< katakana as it is spoken: ワ for the particle は; may be empty
    Grammar grammar;
    bool fromLexicon = false;  ///< then the reading is hiragana, with blanks between words
};

/// What comes before a sentence: nothing, or a word in another script (the は of "ABBAは" is a particle).
enum class Start { OfText, AfterWord };

class Dictionary {
  public:
    /// Opens the dictionary in `folder`, or if that is empty the first usable one of the places where systems
    /// have it. Throws NoDictionary.
    explicit Dictionary(const std::filesystem::path& folder = {});
    ~Dictionary();
    Dictionary(Dictionary&&) noexcept;
    Dictionary& operator=(Dictionary&&) noexcept;

    /// The likeliest morphemes of the sentence; their surfaces together are the sentence. No morpheme holds
    /// both digits and other characters. The sentence has no stray bytes; memory grows with its length.
    std::vector<Morpheme> Segment(std::u32string_view sentence, Start start = Start::OfText) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::japanese
