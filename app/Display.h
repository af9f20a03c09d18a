// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace sorakaze {

/// Why no window can be opened, for the user; empty if one probably can. The toolkit itself would end the
/// process on a display that doesn't answer. Displays of other machines aren't tried.
std::string WhyNoDisplay();

}  // namespace sorakaze
