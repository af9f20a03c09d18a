// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Characters and text of formats that are ASCII by their definition, in any locale. Other bytes are left as
// they are.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::ascii {

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr bool IsLetter(char c) {
    return Lower(c) >= 'a' && Lower(c) <= 'z';
}

/// The value of a hexadecimal digit in either case; -1 for another character.
constexpr int HexDigit(char c) {
    if (IsDigit(c)) return c - '0';
    return Lower(c) >= 'a' && Lower(c) <= 'f' ? Lower(c) - 'a' + 10 : -1;
}

std::string Lowered(std::string_view text);

/// A part of `text`: without any of `blanks` at its ends.
std::string_view Trimmed(std::string_view text, std::string_view blanks);

}  // namespace sorakaze::ascii
