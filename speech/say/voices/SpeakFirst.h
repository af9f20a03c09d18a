// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "speech/say/voices/Recorder.h"
#include "speech/say/voices/VoiceCatalogue.h"

namespace sorakaze::speech {

/// A candidate that didn't speak, and why as one line for the user.
struct PassedOver {
    VoiceCandidate candidate;
    std::string why;
};

struct SpeakResult {
    VoiceCandidate used;
    std::vector<PassedOver> passedOver;  ///< in the order in which they were tried
    bool cut = false;                    ///< the speech was too long
};

/// The text as a voice of that language is given it.
using TextForLanguage = std::function<std::string(const std::string& language)>;

/// Speaks with the first candidate that can, into the recorder, which it finishes. A candidate that fails or
/// stays silent is passed over, and nothing of it is kept; only the last one may be silent, since a text may
/// hold no word. Throws what the last one throws, and what the file's errors are.
SpeakResult SpeakFirst(const VoiceChoice& choice, const TextForLanguage& text, double speed,
                       Recorder& recorder);

}  // namespace sorakaze::speech
