// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The percent coding of URLs (RFC 3986).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sorakaze {

/// `text` with every byte coded but ASCII letters, digits and those of `plain`.
std::string PercentEncoded(std::string_view text, std::string_view plain = "-._~");

/// Nothing where a percent sign isn't followed by two hexadecimal digits.
std::optional<std::string> PercentDecoded(std::string_view text);

/// A percent sign that isn't followed by two hexadecimal digits is left as it is.
std::string PercentDecodedLeniently(std::string_view text);

}  // namespace sorakaze
