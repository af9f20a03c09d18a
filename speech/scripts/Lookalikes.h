// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::scripts {

/// The Latin letter for which a Greek or Cyrillic one stands, as in KoЯn and GΛLΛXY; empty if `text` isn't
/// one such letter, or doesn't touch a Latin one in `context`, where it is from. Both are in lower case.
std::string LookalikeOf(std::string_view text, std::string_view context);

}  // namespace sorakaze::scripts
