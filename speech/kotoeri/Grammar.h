// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a piece of a sentence is.
#pragma once

#include "speech/kotoeri/Dictionary.h"

namespace sorakaze::kotoeri {

bool IsKanjiNumber(const Morpheme& morpheme);
bool IsDigits(const Morpheme& morpheme);
bool IsHiraganaAlone(const Morpheme& morpheme);
bool IsKatakanaAlone(const Morpheme& morpheme);
/// Likely part of a name that the dictionary doesn't know.
bool IsUnknownKanji(const Morpheme& morpheme);

bool IsSuffix(const Grammar& grammar);
bool IsCounter(const Grammar& grammar);
bool IsParticle(const Grammar& grammar);
bool IsFamilyName(const Grammar& grammar);
bool IsGivenName(const Grammar& grammar);
/// Verbs, adjectives and their endings.
bool Inflects(const Grammar& grammar);
/// だ and です stand behind nouns as well and are words of their own there.
bool IsCopula(const Grammar& grammar);

}  // namespace sorakaze::kotoeri
