// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The lines on standard output by which `say` tells who spoke and which voices there are. Their readers are
// speech/SayLine.cpp and studio/Voices.cpp.
#pragma once

#include <string>

#include "speech/say/folders/FolderVoices.h"
#include "speech/say/voices/SpeakFirst.h"

namespace sorakaze::speech {

/// "voice: Alex (espeak-ng)<tab>Piper: it took too long": who spoke, and why not as the user has it. Empty if
/// the first candidate spoke and nothing is wrong with its folder.
std::string SpokenByLine(const FolderVoices& voices, const std::string& asked, const SpeakResult& result);

/// "credit: TITLE<tab>LICENCE" of a voice whose folder names someone to be credited; empty otherwise.
std::string CreditLine(const FolderVoices& voices, const VoiceCandidate& used);

/// A line for each voice: name, language, engine, licence, credit and what is wrong with it, separated by
/// tabs and with a hyphen for what isn't known. The user's own come first.
std::string VoiceLines(const FolderVoices& voices, const VoiceSource& builtIn);

}  // namespace sorakaze::speech
