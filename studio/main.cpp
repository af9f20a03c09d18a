// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include "base/PrintableText.h"
#include "studio/StudioError.h"
#include "studio/commands/Commands.h"

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

}  // namespace

int main(int argc, char** argv) {
    OpenStandardStreams();
    // A closed pipe and a file size limit are errors to report, and must not end the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    int status = kDone;
    CLI::App app("Renders a Sorakaze show to a sound file, many times faster than it plays.",
                 "sorakaze-studio");
    app.require_subcommand(1);
    AddRenderCommand(app, status);
    AddListCommand(app, status);
    AddCheckCommand(app, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return Fail(kWrongCall, std::string(error.what()) + " Try: sorakaze-studio --help");
    } catch (const StudioError& error) {
        return Fail(error.Status(), error.what());
    } catch (const std::exception& error) {
        return Fail(kFailed, error.what());
    }
    return status;
}
