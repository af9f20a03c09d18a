// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <vector>

#include "speech/japanese/Dictionary.h"

namespace sorakaze::japanese {

/// For each morpheme of a sentence, whether it belongs to the same word as the one before it: a verb's
/// endings, suffixes, and the parts of names and of words in kana that the dictionary splits.
std::vector<bool> JoinsPrevious(const std::vector<Morpheme>& morphemes);

}  // namespace sorakaze::japanese
