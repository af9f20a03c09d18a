// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "speech/japanese/Dictionary.h"
#include "speech/japanese/Lexicon.h"

namespace sorakaze::japanese {

/// The reading in hiragana of one morpheme of a sentence, as its neighbours ask for it. Numbers are read
/// elsewhere; digits stay.
std::u32string ReadingAt(const std::vector<Morpheme>& morphemes, std::size_t at, UseLexicon lexicon);

}  // namespace sorakaze::japanese
