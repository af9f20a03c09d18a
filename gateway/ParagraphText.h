// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The plain text of a paragraph, UTF-8 with marks of bold, taken to pieces. Any bytes; any thread.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace sorakaze::gateway {

/// Around what stands in bold in a paragraph's text; no page holds them.
inline constexpr char kBoldBegins = '\x01';
inline constexpr char kBoldEnds = '\x02';

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words);

std::size_t Characters(std::string_view text);

/// The bytes of the character that begins at `at`.
std::string_view CharacterAt(std::string_view text, std::size_t at);

/// The bytes up to the next blank, blanks before them skipped; `at` is behind them then. Empty at the end.
std::string_view NextWord(std::string_view text, std::size_t& at);

enum class Bracket { None, OpensRound, ClosesRound, OpensSquare, ClosesSquare };

/// Of ordinary and full-width ones.
Bracket BracketOf(std::string_view character);

enum class Removal { Shortens, Overwrites };

/// Brackets go with all that is in them, one that has no partner goes alone. Straight quotes go too. What is
/// overwritten, marks of bold included, keeps everything else at its place.
std::string WithoutBrackets(std::string_view text, Removal removal = Removal::Shortens);

std::string WithoutMarks(std::string_view text);

/// One blank where there were several, none before a comma, one comma where brackets left two.
std::string Tidied(std::string_view text);

}  // namespace sorakaze::gateway
