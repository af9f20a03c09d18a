// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What somebody meant by a word that the system doesn't have. Pure functions.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "program/check/PlacedLine.h"

namespace sorakaze::check {

/// Full-width letters, digits and signs as their ASCII ones, as Japanese keyboards mix them up; blanks for
/// wide and no-break blanks.
char32_t Narrowed(char32_t character);
std::string Narrowed(std::string_view text);

struct Meant {
    std::string_view word;
    bool certain = false;  ///< a plain slip, and no other word is as near
};

/// Nullopt if nothing is near.
std::optional<Meant> FindMeant(std::string_view written, std::span<const std::string_view> words,
                               std::span<const words::OtherWord> otherWords);

struct KeyGuess {
    std::string_view name;  ///< of a header or a block
    Span written;           ///< with what is there in place of its colon
    bool hasColon = false;
    bool certain = false;
    /// Whether the rest of the line reads as what the key has.
    bool plausible = false;
};

/// For a line that begins with no key.
std::optional<KeyGuess> GuessKey(std::string_view line, Span clean);

}  // namespace sorakaze::check
