// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include "base/PrintableText.h"
#include "sound/encoding/SoundFileWriter.h"
#include "studio/Console.h"
#include "studio/Render.h"
#include "studio/StudioError.h"

namespace {

using namespace sorakaze::studio;

int Fail(int status, const std::string& line) {
    std::fprintf(stderr, "sorakaze-studio: %s\n", sorakaze::Printable(line).c_str());
    return status;
}

/// If a standard stream were closed, the next file opened (the sound, say) would take its place.
void OpenStandardStreams() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO) close(descriptor);
}

/// Refuses paths that would make the studio overwrite its own input or output.
void CheckPaths(const RenderOptions& options) {
    if (options.limitSeconds && !std::isfinite(*options.limitSeconds)) {
        throw StudioError(kWrongCall, "--limit is no number of seconds.");
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

int RunCommand(RenderOptions options, bool list) {
    if (list) {
        List(options.station);
        return kDone;
    }
    CheckPaths(options);
    if (options.output == "none") options.output.clear();
    Render(options);
    return kDone;
}

}  // namespace

int main(int argc, char** argv) {
    OpenStandardStreams();
    // A closed pipe and a file size limit are errors to report, and must not end the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
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
    render->add_flag("--offline", options.offline,
                     "Ask nothing beyond this machine: with a seed, the same show comes out bit for bit");
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
    try {
        return RunCommand(options, list->parsed());
    } catch (const StudioError& error) {
        return Fail(error.Status(), error.what());
    } catch (const std::exception& error) {
        return Fail(kFailed, error.what());
    }
}
