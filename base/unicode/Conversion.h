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
    Windows1251,
    Windows1252,
    Utf16BigEndian,
    Utf16LittleEndian
};

/// UTF-8 for text in another encoding, without a byte order mark. What `encoding` doesn't have becomes a
/// replacement character. A pure function.
std::string ToUtf8(std::string_view bytes, Encoding encoding);

}  // namespace sorakaze::unicode
