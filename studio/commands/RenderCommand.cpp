// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <CLI/CLI.hpp>
#include <cmath>
#include <memory>

#include "studio/Render.h"
#include "studio/StudioError.h"
#include "studio/commands/Commands.h"

namespace sorakaze::studio {
namespace {

/// Refuses paths that would make the studio overwrite its own input or output.
void CheckPaths(const RenderOptions& options) {
    if (options.limitSeconds && !std::isfinite(*options.limitSeconds)) {
        throw StudioError(kWrongCall, "--limit is not a number of seconds.");
    }
    if (options.output.empty())
        throw StudioError(kWrongCall, "--output is empty: name a sound file, or none.");
    if (options.trace.empty()) return;
    const auto trace = std::filesystem::weakly_canonical(std::filesystem::absolute(options.trace));
    if (trace == std::filesystem::weakly_canonical(std::filesystem::absolute(options.output))) {
        throw StudioError(kWrongCall, "--trace and --output name the same file.");
    }
    if (trace.parent_path().filename() == "Programs") {
        throw StudioError(kWrongCall, "--trace names a file in Programs: choose another place.");
    }
}

}  // namespace

void AddRenderCommand(CLI::App& app, int& /*status*/) {
    auto* render = app.add_subcommand("render", "Render a show to a sound file");
    const auto shared = std::make_shared<RenderOptions>();
    RenderOptions& options = *shared;
    render->add_option("--station", options.station,
                       "The folder that holds Sorakaze.app; without it, this program's own");
    render
        ->add_option("--program", options.program, "The show script: a file of Programs, without its ending")
        ->required();
    render->add_option("--playlist", options.playlist, "The playlist")->capture_default_str();
    render
        ->add_option("--output", options.output,
                     "The sound file: .wav, .flac, .opus, .ogg (Opus) or .mp3; or none")
        ->required();
    render->add_option("--song-seconds", options.songSeconds, "Seconds of each track before it is faded out")
        ->check(CLI::Range(30, 600));
    render->add_option("--limit", options.limitSeconds, "Stop the show after so many seconds")
        ->check(CLI::Range(0.001, 1e7));
    render->add_option("--seed", options.seed, "The same seed makes the same draws");
    render->add_option("--trace", options.trace, "Write the show's events here, as JSON Lines");
    render->add_flag("--offline", options.offline,
                     "Ask nothing beyond this machine: with a seed, the same show comes out bit for bit");
    render->add_flag("--quiet", options.quiet, "No transcript");
    render->footer(
        "Example:\n  sorakaze-studio render --program \"Night Owls\" --playlist Library --output night.mp3\n"
        "Status: 0 done, 1 not rendered, 2 wrong call, 4 more than half of the tracks could not be played.");
    render->callback([shared] {
        CheckPaths(*shared);
        if (shared->output == "none") shared->output.clear();
        Render(*shared);
    });
}

}  // namespace sorakaze::studio
