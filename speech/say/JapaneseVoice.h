// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

#include "speech/japanese/Reader.h"
#include "speech/say/Engine.h"

namespace sorakaze::speech {

/// Speaks a Japanese text that SpokenText and OrdinaryForms returned with the engine's chosen voice: foreign
/// names as an English speaker says them, pauses at the marks. Passes on what the sink throws.
void SpeakJapanese(Engine& engine, const japanese::Reader& reader, std::string_view text, double speed,
                   const Engine::Sink& sink);

}  // namespace sorakaze::speech
