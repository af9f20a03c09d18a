// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Makes well-formed what sloppy writers of XML get wrong in texts, piece by piece: an ampersand that begins
// no reference becomes one that does, a control character becomes a blank.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sorakaze::player {

class XmlRepair {
  public:
    /// The piece repaired. Its last few bytes may come with the next piece.
    std::string Next(std::string_view piece);

  private:
    void Follow(char character);

    std::string held_;              ///< an ampersand and the few bytes after it
    bool inCharacterData_ = false;  ///< where an ampersand is an ampersand
    std::size_t matched_ = 0;       ///< characters of what begins or ends character data
};

}  // namespace sorakaze::player
