// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string_view>

#include "speech/say/voices/FliteEngine.h"

namespace sorakaze::speech {

/// How Flite speaks as the English person of that first name (folded); nothing for other names.
std::optional<FliteLook> FindFliteLook(std::string_view folded);

}  // namespace sorakaze::speech
