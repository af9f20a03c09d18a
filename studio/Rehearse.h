// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Rehearses shows: one as a timetable, or many, one for each seed, for how long they are.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace sorakaze::studio {

struct RehearseOptions {
    std::filesystem::path station;  ///< empty: the one that this program is in
    std::string program;
    std::string playlist = "Library";
    std::filesystem::path trace;  ///< of the one show that is told; empty: none
    std::optional<std::int32_t> songSeconds;
    std::optional<double> limitSeconds;
    std::uint64_t seed = 1;  ///< the first
    int seeds = 1;           ///< how many shows
    /// Of the shows the one that ends nearest to it is told.
    std::optional<double> endAfter;  ///< seconds
};

/// Prints to standard output. Throws StudioError where the show can't be run.
void Rehearse(const RehearseOptions& options);

}  // namespace sorakaze::studio
