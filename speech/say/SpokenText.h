// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::speech {

/// What the engine may be given of a text that came from tags or from the web: valid UTF-8 without control
/// characters (the engine takes some of them as commands for pitch and speed), private-use characters and
/// noncharacters. What is left out leaves a blank, so that words stay apart. Linear; never fails.
std::string SpokenText(std::string_view bytes);

}  // namespace sorakaze::speech
