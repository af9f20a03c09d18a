// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "speech/japanese/Reader.h"

namespace sorakaze::speech {

/// How a morpheme is spoken, in katakana: particles by their sound (ワ, エ, オ), long vowels as ー. Blanks
/// part the words of a name. Empty if it has no sound.
std::u32string Pronunciation(const japanese::ReadMorpheme& morpheme);

}  // namespace sorakaze::speech
