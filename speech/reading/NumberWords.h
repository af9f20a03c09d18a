// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Numbers in words, for the languages whose voices read them in another way than a presenter. Each function
// returns an empty text for a language, or a number, that it leaves as it is.
#pragma once

#include <string>

#include "speech/reading/Languages.h"

namespace sorakaze::reading {

/// 0 to 99.
std::string Cardinal(int number, Main main);
/// 1 to 99, as "fifth", "fünfte".
std::string Ordinal(int number, Main main);
/// From 1100, as "nineteen eighty four", "neunzehnhundertvierundachtzig".
std::string Year(int year, Main main);
/// Of two digits or a whole year, as "eighties", "nineteen eighties", "achtziger".
std::string Decade(int year, Main main);

}  // namespace sorakaze::reading
