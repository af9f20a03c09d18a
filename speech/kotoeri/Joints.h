// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <vector>

#include "speech/kotoeri/Dictionary.h"

namespace sorakaze::kotoeri {

/// For each piece of a sentence, whether it goes on with the word that the piece before it ends: a verb's
/// endings, suffixes, and what the dictionary cuts of names and of words in kana.
std::vector<bool> Joints(const std::vector<Morpheme>& morphemes);

}  // namespace sorakaze::kotoeri
