// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::scripts {

/// Letters and digits that are written for ornament (𝓗, Ａ, ﬁ, Ⓐ, Ⅶ), and the digits of every script, as the
/// plain ones that they look like. Nothing else changes: a mark such as ＄ must not become one that a shell
/// knows. Any bytes; linear.
std::string PlainLetters(std::string_view text);

}  // namespace sorakaze::scripts
