// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::speech {

/// The part of a text from tags or from the web that is safe for the engine: valid UTF-8 without control
/// characters (the engine takes some of them as commands for pitch and speed), private-use characters and
/// noncharacters. A blank replaces what is left out, so that words stay apart. Linear; never fails.
std::string SpokenText(std::string_view bytes);

}  // namespace sorakaze::speech
