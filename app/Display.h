// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace sorakaze {

/// Why no window can be opened, in words for the user; empty if nothing speaks against it. The toolkit itself
/// would end the process on a display that doesn't answer. Displays of other machines are taken at their
/// word.
std::string WhyNoDisplay();

}  // namespace sorakaze
