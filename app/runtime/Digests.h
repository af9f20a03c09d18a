// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "app/runtime/String.h"

namespace sorakaze {

/// The 16 raw bytes of the MD5 digest.
String MD5(const String& data);

/// Base64 in lines of `lineWrap` characters with CRLF between them and none after the last; 0 or less for
/// one line.
String EncodeBase64(const String& data, std::int32_t lineWrap = 76);

}  // namespace sorakaze
