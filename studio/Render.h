// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Renders a show to a sound file: the show runs on the studio's clock, whose time is the amount of sound
// mixed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace sorakaze::studio {

class Rehearsal;

struct RenderOptions {
    std::filesystem::path station;  ///< empty: the one that this program is in
    std::string program;
    std::string playlist = "Library";
    /// Its ending names the format; empty: the sound is computed and dropped.
    std::filesystem::path output;
    std::filesystem::path trace;  ///< empty: none
    std::optional<std::int32_t> songSeconds;
    std::optional<double> limitSeconds;
    std::optional<std::uint64_t> seed;
    bool offline = false;  ///< nothing beyond this machine is asked
    bool quiet = false;    ///< no transcript
    /// Follows the show, of which then no sound is made and nothing printed. Null: none.
    Rehearsal* rehearsal = nullptr;
};

/// Returns when the show has run to its end or limit, or was interrupted, and the file is complete. Throws
/// StudioError when it could not be made; an existing `output` is then unchanged.
void Render(const RenderOptions& options);

}  // namespace sorakaze::studio
