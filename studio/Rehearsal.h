// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A show's timetable, and what looks wrong in it. Of an ordinary run whose sounds are counted and not mixed:
// the times are those of a render.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "app/runtime/CommandCache.h"
#include "show/ShowObserver.h"
#include "studio/Recorder.h"

namespace sorakaze::studio {

class Rehearsal final : public ShowObserver {
  public:
    /// `commands` outlives this.
    Rehearsal(std::filesystem::path station, CommandCache& commands);

    CommandCache& Commands() { return commands_; }
    void OnShowEvent(const ShowEvent& event) override;
    void TakeSilences(const std::vector<Silence>& silences);

    /// A line each, with its time. After the show.
    std::vector<std::string> Timetable() const;
    /// In ticks from the show's start to its end, or to the last event.
    std::int32_t Length() const { return length_; }
    bool HasEnded() const { return ended_; }
    int Warnings() const { return warnings_; }

  private:
    struct Row {
        std::int32_t ticks;
        std::string text;
    };
    void ReadProgram(const std::string& name);
    void Warn(std::int32_t ticks, const std::string& what);
    void OnBlock(const ShowEvent& event);
    void OnLine(const ShowEvent& event);
    std::string Describe(const ShowEvent& event) const;

    const std::filesystem::path station_;
    CommandCache& commands_;
    /// By the block's name: a variant, and whether there are others.
    std::map<std::string, std::pair<std::optional<std::int32_t>, bool>> variants_;
    std::vector<std::string> commandLines_;  ///< of its file, since what a line became says no placeholders
    std::vector<Row> rows_;
    struct Drawn {
        std::string variant;
        int times = 0;
    };
    std::map<std::string, Drawn> drawn_;  ///< by the block's name
    std::int64_t begin_ = 0;              ///< the tick at which the show began
    std::int32_t length_ = 0;
    bool ended_ = false;
    int warnings_ = 0;
};

/// The placeholders of a line of a program that stand for nothing in what became of it, as "[[album]]". Pure.
std::vector<std::string> EmptyPlaceholders(std::string_view line, std::string_view became);

}  // namespace sorakaze::studio
