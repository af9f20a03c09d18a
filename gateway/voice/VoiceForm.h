// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads the voice service's form. Pure functions; any thread.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace sorakaze::gateway {

/// What the form asks to be spoken.
struct SpeechOrder {
    std::string voice;  ///< for the program say
    std::string text;   ///< without control characters; empty when there is nothing to say
    std::string speed;  ///< a number from 0.5 to 2, as text
};

/// Nullopt for a form that isn't the service's: one of the seven fields is missing, is there twice, or is no
/// number where it should be. A speed out of range is clamped, and a text that is too long is cut after a
/// sentence.
std::optional<SpeechOrder> ReadVoiceForm(const std::multimap<std::string, std::string>& fields);

/// Characters: about five minutes of speech.
inline constexpr std::size_t kMostTextCharacters = 2000;

/// The beginning of `text` with at most `characters`: whole sentences if possible, else whole phrases or
/// words.
std::string_view CutText(std::string_view text, std::size_t characters);

/// Makes `text` one word for the shell. Nothing is special within single quotes; a quote itself is written
/// outside them. `text` holds no zero byte.
std::string QuoteForShell(std::string_view text);

}  // namespace sorakaze::gateway
