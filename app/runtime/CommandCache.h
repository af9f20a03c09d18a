// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What commands have made, for a run that gives the same ones again and again: a rehearsal of many shows. The
// files lie in a folder of its own.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "app/runtime/RunFolder.h"
#include "app/runtime/String.h"

namespace sorakaze {

/// For the baton's holder, of one runtime after the other.
class CommandCache {
  public:
    struct Outcome {
        String result, complaint;
        std::int32_t errorCode = 0;
        std::filesystem::path file{};  ///< empty: none was made
    };

    CommandCache() : folder_(RunFolder::Make()) {}

    /// What the command made before, if it is known, with its file in the place of `output`.
    std::optional<Outcome> Repeat(const std::string& command, const std::filesystem::path& output) const;
    void Keep(const std::string& command, Outcome outcome, const std::filesystem::path& output);

  private:
    static std::string KeyOf(const std::string& command, const std::filesystem::path& output);

    const std::unique_ptr<RunFolder> folder_;  ///< null: nothing is kept
    std::map<std::string, Outcome> known_;     ///< by the command without the name of its file
};

}  // namespace sorakaze
