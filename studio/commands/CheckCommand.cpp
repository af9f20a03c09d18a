// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <CLI/CLI.hpp>
#include <memory>

#include "studio/check/Check.h"
#include "studio/commands/Commands.h"

namespace sorakaze::studio {

void AddCheckCommand(CLI::App& app, int& status) {
    auto* check = app.add_subcommand("check", "Check programs for what the show would not do as it is meant");
    const auto shared = std::make_shared<CheckOptions>();
    CheckOptions& options = *shared;
    check->add_option("PROGRAM", options.programs,
                      "Programs of the station, or files; all of the station without one");
    check->add_option(
        "--station", options.station,
        "The folder that holds Sorakaze.app; without it, the one that the file is in, or this program's own");
    // One word each, so that programs may follow.
    check
        ->add_option("--playlist", options.playlists,
                     "Check a playlist too, a name or a file; may be repeated")
        ->allow_extra_args(false);
    check->add_flag("--json", options.json, "Print an array of findings, for editors");
    check->add_flag("--watch", options.watch, "Check again whenever a file is saved, until Ctrl-C");
    check->add_flag("--fix", options.fix,
                    "Mend what can only be meant in one way, and tell what was changed");
    check->add_flag("--quick", options.quick, "Don't speak sayj sentences to know their length");
    check->footer(
        "The exit status is 0 if there is no error, even if there are warnings, 1 if there is one, and 2 for "
        "a wrong call.");
    check->callback([shared, &status] { status = Check(*shared); });
}

}  // namespace sorakaze::studio
