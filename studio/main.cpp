// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "base/PrintableText.h"
#include "studio/StudioError.h"
#include "studio/commands/Commands.h"
#include "studio/commands/WrongWords.h"

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

/// Those after the program's name. "help SUBCOMMAND" is "SUBCOMMAND --help".
std::vector<std::string> Words(int argc, char** argv) {
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (words.empty() || words.front() != "help") return words;
    words.erase(words.begin());
    words.emplace_back("--help");
    return words;
}

}  // namespace

int main(int argc, char** argv) {
    OpenStandardStreams();
    // A closed pipe and a file size limit are errors to report, and must not end the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    int status = kDone;
    CLI::App app("Sorakaze without a window: shows on the air, and shows as sound files.", "sorakaze-studio");
    app.set_version_flag("--version", "sorakaze-studio " SORAKAZE_VERSION);
    app.footer("sorakaze-studio SUBCOMMAND --help tells of a sub-command and its options.");
    app.require_subcommand(1);
    AddAirCommand(app, status);
    AddRenderCommand(app, status);
    AddRehearseCommand(app, status);
    AddListCommand(app, status);
    AddCheckCommand(app, status);
    AddVoicesCommand(app, status);
    try {
        auto words = Words(argc, argv);
        if (const auto wrong = DescribeWrongWord(app, words); !wrong.empty()) return Fail(kWrongCall, wrong);
        std::reverse(words.begin(), words.end());  // as the parser takes them
        app.parse(std::move(words));
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return Fail(kWrongCall, DescribeParseError(app, error));
    } catch (const StudioError& error) {
        return Fail(error.Status(), error.what());
    } catch (const std::exception& error) {
        return Fail(kFailed, error.what());
    }
    return status;
}
