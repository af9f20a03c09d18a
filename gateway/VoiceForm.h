// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the voice service's form asks for. Pure: no process, no file.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace sorakaze::gateway {

struct VoiceWish {
    std::string voice;  ///< for the program say
    std::string text;   ///< without control characters; empty when there is nothing to say
    std::string speed;  ///< a number from 0.5 to 2, as text
};

/// Empty for a form that isn't the service's: a field of the seven missing, twice, or no number where one
/// belongs. A speed outside its range is brought into it, and a text that is too long is cut behind a
/// sentence.
std::optional<VoiceWish> ReadVoiceForm(const std::multimap<std::string, std::string>& fields);

/// At most this many characters are spoken: five minutes or so.
inline constexpr std::size_t kLongestText = 2000;

/// The beginning of `text` that has at most `characters`: whole sentences if there are any, else whole
/// phrases or words.
std::string_view CutText(std::string_view text, std::size_t characters);

/// One word for the shell, whatever it holds: within single quotes nothing is live, and a quote is put
/// together from outside them. `text` holds no zero byte.
std::string QuoteForShell(std::string_view text);

}  // namespace sorakaze::gateway
