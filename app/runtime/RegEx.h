// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "app/runtime/String.h"

namespace sorakaze {

struct RegExOptions {
    bool ReplaceAllMatches = false;
};

/// Patterns of the Perl family on UTF-8 text. `.` matches anything but a line feed.
class RegEx {
  public:
    String SearchPattern;
    /// Taken as it is: nothing in it refers to groups.
    String ReplacementPattern;
    RegExOptions Options;

    /// `target` with the first match replaced, or every match. A pattern that runs away on a target (its work
    /// is bounded) matches nothing more of it. Raises RegExException for a pattern that can't be compiled.
    String Replace(const String& target) const;
};

}  // namespace sorakaze
