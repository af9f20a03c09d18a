// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Questions about the grammar of a morpheme.
#pragma once

#include "speech/japanese/Dictionary.h"

namespace sorakaze::japanese {

bool IsKanjiNumber(const Morpheme& morpheme);
bool IsDigits(const Morpheme& morpheme);
/// True if there is nothing but hiragana, or nothing but katakana.
bool IsHiraganaOnly(const Morpheme& morpheme);
bool IsKatakanaOnly(const Morpheme& morpheme);
/// True for what is likely part of a name that the dictionary doesn't know.
bool IsUnknownKanji(const Morpheme& morpheme);

bool IsSuffix(const Grammar& grammar);
bool IsCounter(const Grammar& grammar);
bool IsParticle(const Grammar& grammar);
bool IsFamilyName(const Grammar& grammar);
bool IsGivenName(const Grammar& grammar);
/// True for verbs, adjectives and their endings.
bool Inflects(const Grammar& grammar);
/// True for だ and です, which follow nouns too and are separate words there.
bool IsCopula(const Grammar& grammar);

}  // namespace sorakaze::japanese
