// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Compares the spellings of artists' names. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::gateway {

/// "Prince" for "Prince (musician)": the subject's name without what tells it from others of that name.
std::string_view WithoutQualifier(std::string_view title);

/// "musician" for "Prince (musician)"; empty without one.
std::string_view QualifierOf(std::string_view title);

/// Ignores letter case, accents, widths, punctuation, blanks and a leading "The"; "&" is the same as "and".
bool SameName(std::string_view one, std::string_view other);

/// Equal for two spellings of the same name.
std::string NameKey(std::string_view name);

}  // namespace sorakaze::gateway
