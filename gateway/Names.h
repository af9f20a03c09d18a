// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// When two spellings are one artist's name.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::gateway {

/// "Prince" of "Prince (musician)": the name that people know an article's subject by.
std::string_view WithoutQualifier(std::string_view title);

/// Letter case, accents, widths, punctuation, blanks, a leading "The" and "&" for "and" don't count.
bool SameName(std::string_view one, std::string_view other);

}  // namespace sorakaze::gateway
