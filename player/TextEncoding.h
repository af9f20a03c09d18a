// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Guesses the encoding of short texts, such as titles, that aren't UTF-8: by which encoding makes the most
// plausible text of the bytes. Pure.
#pragma once

#include <string_view>

#include "base/unicode/Conversion.h"

namespace sorakaze::player {

/// Windows1252, unless the bytes speak clearly for Cyrillic, Korean, simplified Chinese or Japanese (EUC-JP;
/// Shift_JIS is told by others).
unicode::Encoding LikelyEncoding(std::string_view bytes);

}  // namespace sorakaze::player
