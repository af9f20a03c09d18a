// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "speech/say/voices/VoiceEngine.h"

namespace sorakaze::speech {

/// Voices of one kind: those of the user's folders, those that come with the system.
class VoiceSource {
  public:
    virtual ~VoiceSource() = default;

    /// The candidates for a voice of that name, best first; empty if this source has none. `name` is as the
    /// user wrote it. Starts no engine that isn't needed to know the name.
    virtual std::vector<VoiceCandidate> Named(const std::string& name) const = 0;

    /// Those that can replace a voice of that language, best first.
    virtual std::vector<VoiceCandidate> ForLanguage(const std::string& language) const = 0;
};

/// The candidates of one name, in the order in which they are tried. Empty for an unknown name.
struct VoiceChoice {
    std::string asked;
    std::vector<VoiceCandidate> candidates;
};

/// All sources. Candidates keep references to their sources, so that the catalogue outlives them.
class VoiceCatalogue {
  public:
    /// Sources that are added earlier are asked earlier.
    void Add(std::unique_ptr<VoiceSource> source);

    /// What the first source that knows the name has, then what all sources have for that language.
    VoiceChoice Choose(const std::string& name) const;

  private:
    std::vector<std::unique_ptr<VoiceSource>> sources_;
};

/// The part of a language code that names the language: "en" of "en-gb-scotland".
std::string MainLanguage(const std::string& language);

}  // namespace sorakaze::speech
