// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Renders a show to a sound file: the show's own engine on the studio's clock, whose time is the sound mixed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace sorakaze::studio {

struct RenderOptions {
    std::filesystem::path station;  ///< empty: the one that the program stands in
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
};

/// Returns when the show has run to its end or limit, or was interrupted, and the file is complete. Throws
/// StudioError when it could not be made; what stood at `output` is then untouched.
void Render(const RenderOptions& options);

/// Prints the programs and playlists of a station. Throws StudioError.
void List(const std::filesystem::path& station);

}  // namespace sorakaze::studio
