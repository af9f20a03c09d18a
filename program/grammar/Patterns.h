// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Regular expressions for the parts of a line, which every engine of an editor reads the same way. Letter
// case is the caller's to ignore.
#pragma once

#include <string>

namespace sorakaze::grammar {

/// "(?:program|station)", the words without their colons.
std::string HeaderPattern();
std::string BlockPattern();
/// A whole word.
std::string ModePattern();
/// With the brackets.
std::string PlaceholderPattern();
std::string TrackPattern();

inline constexpr const char* kAnyPlaceholder = "\\[\\[[^\\]]*\\]\\]";
inline constexpr const char* kVariant = "(?:10|[0-9])(?![0-9])";

}  // namespace sorakaze::grammar
