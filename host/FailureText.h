// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

#include "show/ShowObserver.h"

namespace sorakaze {

/// Whether people are told of the event as of a failure.
bool IsFailure(const ShowEvent& event);

/// An event `failed` or `voice` as one line for people: "Music/a.mp3: it is empty", "say: no voice is called
/// "Bob" (Show.txt, line 3)", "voice Amy is spoken by Alex (Flite): Piper: it took too long". Paths
/// within the station are relative to it.
std::string FailureText(const ShowEvent& event, const std::filesystem::path& station);

}  // namespace sorakaze
