// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/runtime/RunFolder.h"

namespace sorakaze::studio {

/// A voice of `say -v`, as `say --voices` tells of it. Texts are empty where they aren't known.
struct Voice {
    std::string name, language, engine, licence, credit;
    std::string problem;  ///< what is wrong with the folder of a voice of the user's own
};

/// One text that was spoken.
struct SpokenSentence {
    std::filesystem::path file;  ///< lies in the folder of the voices
    std::string replacedBy;      ///< who spoke in place of the voice, and why; empty if it spoke
    double length = 0;           ///< in seconds
    double taken = 0;            ///< seconds until the sound was there
};

/// The voices of a station. They are asked of the station's own program, confined as in a show, and so see
/// what a show sees. Main thread.
class StationVoices {
  public:
    explicit StationVoices(const std::filesystem::path& station);

    /// Empty if the program is missing or fails.
    std::vector<Voice> List() const;
    /// Nothing if no sound was made; then `complaint` says why.
    std::optional<SpokenSentence> Speak(const std::string& name, const std::string& text,
                                        std::string& complaint) const;

  private:
    const std::filesystem::path resources_;
    const std::unique_ptr<RunFolder> folder_;
};

}  // namespace sorakaze::studio
