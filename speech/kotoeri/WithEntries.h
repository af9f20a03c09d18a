// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "speech/kotoeri/Dictionary.h"

namespace sorakaze::kotoeri {

/// A sentence's pieces with the lexicon's entries in place of those that make them up. An entry counts where
/// the dictionary too sees a word begin and a word end: 百合 is none within 小百合, nor 夜風 within 深夜風呂.
std::vector<Morpheme> WithEntries(std::vector<Morpheme> morphemes);

}  // namespace sorakaze::kotoeri
