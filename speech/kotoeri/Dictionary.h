// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The morphological dictionary: cuts a Japanese sentence into words and knows how each is read.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace sorakaze::kotoeri {

/// No usable dictionary. The message is one line that says what to do.
class NoDictionary : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What a word is, as far as its reading and its neighbours depend on it.
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
    std::u32string reading;  ///< katakana; empty where the dictionary doesn't know the word
    Grammar grammar;
    bool isGiven = false;  ///< by the lexicon: the reading is hiragana, with blanks between words
};

class Dictionary {
  public:
    /// Opens the dictionary in `folder`, or the first usable one of the places where systems have it.
    /// Throws NoDictionary.
    explicit Dictionary(const std::filesystem::path& folder = {});
    ~Dictionary();
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    /// The likeliest way to cut the sentence, with digits by themselves. The sentence holds real characters
    /// only and is of bounded length; the pieces together are the sentence.
    std::vector<Morpheme> Cut(std::u32string_view sentence) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::kotoeri
