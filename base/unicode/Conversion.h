// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::unicode {

enum class Encoding {
    ShiftJis,
    EucJp,
    EucKr,
    Gbk,
    Gb2312,
    Big5,
    Windows1251,
    Windows1252,
    Utf16BigEndian,
    Utf16LittleEndian
};

/// UTF-8 for text in another encoding, without a byte order mark. What `encoding` doesn't have becomes a
/// replacement character. A pure function.
std::string ToUtf8(std::string_view bytes, Encoding encoding);

/// Whether `encoding` has that character. Slow: a look into a converter that is made for it.
bool Encodes(Encoding encoding, char32_t code);

}  // namespace sorakaze::unicode
