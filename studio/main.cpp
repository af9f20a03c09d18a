// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "app/runtime/sound/SoundFileWriter.h"
#include "studio/Console.h"
#include "studio/Render.h"
#include "studio/StudioError.h"

namespace {

using namespace sorakaze::studio;

int Fail(int status, const std::string& line) {
    std::fprintf(stderr, "sorakaze-studio: %s\n", Harmless(line).c_str());
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Renders a Sorakaze show to a sound file, many times faster than it plays.",
                 "sorakaze-studio");
    app.require_subcommand(1);
    RenderOptions options;

    auto* render = app.add_subcommand("render", "Render a show to a sound file");
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
    render->add_flag("--quiet", options.quiet, "No transcript");

    auto* list = app.add_subcommand("list", "List a station's programs and playlists");
    list->add_option("--station", options.station,
                     "The folder that holds Sorakaze.app; without it, this program's own");

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return Fail(kWrongCall, std::string(error.what()) + " Try: sorakaze-studio --help");
    }
    if (options.output == "none") options.output.clear();
    try {
        if (list->parsed()) List(options.station);
        if (render->parsed()) Render(options);
        return kDone;
    } catch (const StudioError& error) {
        return Fail(error.Status(), error.what());
    } catch (const std::exception& error) {
        return Fail(kFailed, error.what());
    }
}
