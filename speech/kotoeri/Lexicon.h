// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the dictionary doesn't know or reads as prose and not as music: names of artists above all, and words
// that titles love.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sorakaze::kotoeri {

struct Entry {
    std::u32string_view surface;
    std::u32string_view reading;  ///< hiragana, blanks between words
};

/// The longest entry that `text` begins with.
std::optional<Entry> EntryAtBeginning(std::u32string_view text);

}  // namespace sorakaze::kotoeri
