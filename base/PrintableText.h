// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace sorakaze {

/// Foreign text as it may be printed: control characters are blanks, bytes that aren't UTF-8 are replacement
/// characters, and what turns the direction of the text around it is left out. So no title can steer a
/// terminal, or make a line read as another.
std::string Printable(const std::string& text);

}  // namespace sorakaze
