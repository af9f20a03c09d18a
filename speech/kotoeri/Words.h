// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "speech/kotoeri/Dictionary.h"
#include "speech/kotoeri/Lexicon.h"

namespace sorakaze::kotoeri {

/// The pieces of a sentence as readings in hiragana, joined to the words that somebody would hear: a verb
/// with its endings, a number with what it counts, a name's parts by themselves. What has no reading stays.
std::vector<std::u32string> Words(std::vector<Morpheme> morphemes, Lexicon lexicon);

}  // namespace sorakaze::kotoeri
