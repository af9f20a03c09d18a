// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Operations on the plain text of a paragraph: UTF-8 with marks of bold text. Any bytes; any thread.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace sorakaze::gateway {

/// Around bold text; no page holds them.
inline constexpr char kBoldBegins = '\x01';
inline constexpr char kBoldEnds = '\x02';

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words);

std::size_t CountCharacters(std::string_view text);

/// The bytes of the character that begins at `at`.
std::string_view CharacterAt(std::string_view text, std::size_t at);

/// The next word: bytes up to a blank, after the blanks at `at`. Moves `at` to its end. Empty at the end.
std::string_view NextWord(std::string_view text, std::size_t& at);

enum class Bracket { None, OpensRound, ClosesRound, OpensSquare, ClosesSquare };

/// Ordinary and full-width ones.
Bracket BracketOf(std::string_view character);

enum class Removal { Shortens, Blanks };

/// Removes brackets with their content, a bracket without a partner alone, and straight quotes.
/// Removal::Blanks overwrites them with blanks, and marks of bold text too, so that everything else keeps its
/// place.
std::string WithoutBrackets(std::string_view text, Removal removal = Removal::Shortens);

std::string WithoutBoldMarks(std::string_view text);

/// One blank in place of several, none before a comma, and one comma where removed brackets left two.
std::string WithTidyBlanks(std::string_view text);

}  // namespace sorakaze::gateway
