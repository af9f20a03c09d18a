// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "app/runtime/String.h"

namespace sorakaze::http {

/// The body of a response, collected in pieces. A wait asks for its length again and again, so what has been
/// counted isn't counted again.
class PageBuffer {
  public:
    void Append(const String& piece) { bytes_ += piece.Bytes(); }
    void Clear() { *this = PageBuffer(); }
    String Text() const { return bytes_; }
    /// Len of the text: characters.
    std::int32_t Length();

  private:
    std::string bytes_;
    std::size_t counted_ = 0;  ///< bytes, which hold `characters_` characters
    std::size_t characters_ = 0;
};

}  // namespace sorakaze::http
