// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

#include "studio/Listing.h"
#include "studio/commands/Commands.h"

namespace sorakaze::studio {

void AddListCommand(CLI::App& app, int& /*status*/) {
    struct Options {
        std::filesystem::path station;
        bool json = false;
    };
    auto* list = app.add_subcommand(
        "list", "List a station's programs and playlists, and how many tracks are missing");
    const auto options = std::make_shared<Options>();
    list->add_option("--station", options->station,
                     "The folder that holds Sorakaze.app; without it, this program's own");
    list->add_flag("--json", options->json, "One JSON object, with each missing track and why");
    list->callback(
        [options] { List(options->station, options->json ? ListFormat::Json : ListFormat::Text); });
}

}  // namespace sorakaze::studio
