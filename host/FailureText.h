// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

#include "show/ShowObserver.h"

namespace sorakaze {

/// An event `failed` as one line for people: "Music/a.mp3: it is empty", "say: no voice is called "Bob"
/// (Show.txt, line 3)". Paths within the station are relative to it.
std::string FailureText(const ShowEvent& event, const std::filesystem::path& station);

}  // namespace sorakaze
