// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <variant>

#include "app/runtime/String.h"

namespace sorakaze {

/// A value of either kind that scripts take.
class Variant {
  public:
    static constexpr int kInteger = 2;
    static constexpr int kString = 8;

    Variant() = default;
    Variant(String text) : value_(std::move(text)) {}
    Variant(const char* text) : value_(String(text)) {}
    Variant(std::int32_t number) : value_(number) {}

    int VarType() const { return std::holds_alternative<std::int32_t>(value_) ? kInteger : kString; }
    /// The value as the kind asked for; a text as an integer is its Val.
    std::int32_t Integer() const {
        const auto* number = std::get_if<std::int32_t>(&value_);
        return number ? *number : ToInt32(Val(std::get<String>(value_)));
    }
    String Text() const {
        const auto* number = std::get_if<std::int32_t>(&value_);
        return number ? Str(*number) : std::get<String>(value_);
    }

  private:
    std::variant<String, std::int32_t> value_;
};

}  // namespace sorakaze
