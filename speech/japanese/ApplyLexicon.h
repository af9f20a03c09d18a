// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "speech/japanese/Dictionary.h"

namespace sorakaze::japanese {

/// Replaces the morphemes that make up an entry of the lexicon by that entry. An entry counts only where the
/// dictionary has word boundaries at both its ends: neither 百合 within 小百合 nor 夜風 within 深夜風呂 does.
std::vector<Morpheme> ApplyLexicon(const std::vector<Morpheme>& morphemes);

}  // namespace sorakaze::japanese
