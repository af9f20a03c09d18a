// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "speech/say/Engine.h"

namespace sorakaze::speech {

/// Reads a Japanese text (as SpokenText and OrdinaryWidths give it) with the engine's chosen voice: kanji by
/// the dictionary, foreign names as an English speaker has them, pauses where the marks stand. What the sink
/// throws is thrown here, and std::runtime_error where there is no dictionary.
void SpeakJapanese(Engine& engine, const std::string& text, double speed, const Engine::Sink& sink);

}  // namespace sorakaze::speech
