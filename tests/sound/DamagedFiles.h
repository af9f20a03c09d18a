// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Damaged files on the whole way that a file of a show takes: its tags are read, it is opened, started,
// mixed and dropped, through the real decoder program. Says what must not have happened.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "sound/MixingEngine.h"
#include "tests/sound/Traces.h"

namespace sorakaze::sound::testing {

class DamagedFiles {
  public:
    /// `good` is a sound file that can be played, of a second at least.
    DamagedFiles(std::shared_ptr<Decoders> decoders, std::filesystem::path good);

    /// Plays `file` as `number` says: on the air or not, to its end or not. Empty when all held, else what
    /// didn't.
    std::string Play(const std::filesystem::path& file, std::uint64_t number);

    /// After all files: whether anything of them is left. As for Play.
    std::string CheckTraces();

    /// How often each failure was told of, by its words.
    const std::map<std::string, int>& Failures() const { return failures_; }
    /// The words of the last file's failure; empty where there was none.
    const std::string& LastFailure() const { return lastFailure_; }
    int Played() const { return played_; }

  private:
    std::string Mix(MixingEngine& engine, Voice& voice, std::int64_t frames);
    std::string PlayGood(MixingEngine& engine);
    static std::string MixRest(MixingEngine& engine);
    std::string TakeFailures(MixingEngine& engine, const std::filesystem::path& file);

    const std::filesystem::path good_;
    MixingEngine offline_, realTime_;
    std::optional<Traces> before_;
    std::map<std::string, int> failures_;
    std::string lastFailure_;
    int played_ = 0;
};

}  // namespace sorakaze::sound::testing
