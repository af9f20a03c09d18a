// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "app/runtime/Exceptions.h"
#include "app/runtime/String.h"
#include "show/ProgramPlace.h"

namespace sorakaze {

/// The command lines of one block: (line, variant), both 0 to 10. An empty cell ends a variant.
class Block {
  public:
    static constexpr std::int32_t kUpperBound = 10;
    /// Lines 0 to 9 are filled and run; line 10 stays empty.
    static constexpr std::int32_t kLastLine = 9;

    /// Raises OutOfBoundsException outside of 0 to 10.
    String& operator()(std::int32_t line, std::int32_t variant) {
        if (line < 0 || line > kUpperBound || variant < 0 || variant > kUpperBound) {
            throw OutOfBoundsException("There is no line " + std::to_string(line) + " of variant " +
                                       std::to_string(variant) + ": both go from 0 to 10.");
        }
        return CellAt(line, variant).text;
    }
    /// Where the cell's text was loaded from. Within the bounds.
    ProgramPlace& Origin(std::int32_t line, std::int32_t variant) { return CellAt(line, variant).origin; }

  private:
    struct Cell {
        String text;
        ProgramPlace origin;
    };
    Cell& CellAt(std::int32_t line, std::int32_t variant) {
        return cells_[static_cast<std::size_t>(line)][static_cast<std::size_t>(variant)];
    }

    std::array<std::array<Cell, kUpperBound + 1>, kUpperBound + 1> cells_;
};

/// Shared, because `command` refers to one of the blocks.
using BlockRef = std::shared_ptr<Block>;

}  // namespace sorakaze
