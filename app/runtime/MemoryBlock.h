// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "app/runtime/Exceptions.h"
#include "app/runtime/String.h"

namespace sorakaze {

/// A text's bytes by their place.
class MemoryBlock {
  public:
    explicit MemoryBlock(String text) : text_(std::move(text)) {}

    std::int32_t Size() const { return LenB(text_); }
    /// The byte at the 0-based place. Raises OutOfBoundsException.
    std::uint8_t Byte(std::int32_t i) const {
        if (i < 0 || i >= Size()) throw OutOfBoundsException("There is no byte " + std::to_string(i) + ".");
        return static_cast<std::uint8_t>(text_.Bytes()[static_cast<std::size_t>(i)]);
    }

  private:
    String text_;
};

}  // namespace sorakaze
