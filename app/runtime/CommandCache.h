// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What commands have made, for a run that gives the same ones again: a rehearsal of many shows, a rendered
// show that says a sentence twice. The files lie in a folder of its own.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

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

    enum class Scope {
        Everything,
        Speech,  ///< sentences that `say` has spoken, if the shell does nothing else with their texts
    };

    explicit CommandCache(Scope scope) : scope_(scope), folder_(RunFolder::Make()) {}

    /// What the command made before, if it is known, with its file in the place of `output`.
    std::optional<Outcome> Repeat(const std::string& command, const std::filesystem::path& output);
    void Keep(const std::string& command, Outcome outcome, const std::filesystem::path& output);

    /// True for `say -v VOICE "TEXT" -o FILE` with a text in which the shell finds nothing to do.
    static bool IsSpeech(std::string_view command);

  private:
    struct Entry {
        Outcome outcome;
        std::uintmax_t size = 0;     ///< bytes of its file
        std::uint64_t lastUsed = 0;  ///< by the count of uses
    };

    static std::string KeyOf(const std::string& command, const std::filesystem::path& output);
    bool Covers(const std::string& command) const;
    /// Forgets those that weren't used for the longest time until the files are small enough.
    void MakeRoom();

    const Scope scope_;
    const std::unique_ptr<RunFolder> folder_;  ///< null: nothing is kept
    std::map<std::string, Entry> known_;       ///< by the command without the name of its file
    std::uintmax_t size_ = 0;                  ///< bytes of all files
    std::uint64_t uses_ = 0;
    std::uint64_t made_ = 0;
};

}  // namespace sorakaze
