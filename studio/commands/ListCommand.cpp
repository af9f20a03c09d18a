// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

#include "studio/Render.h"
#include "studio/commands/Commands.h"

namespace sorakaze::studio {

void AddListCommand(CLI::App& app, int& /*status*/) {
    auto* list = app.add_subcommand("list", "List a station's programs and playlists");
    const auto station = std::make_shared<std::filesystem::path>();
    list->add_option("--station", *station,
                     "The folder that holds Sorakaze.app; without it, this program's own");
    list->callback([station] { List(*station); });
}

}  // namespace sorakaze::studio
