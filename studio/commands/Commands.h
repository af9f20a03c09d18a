// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The studio's sub-commands, one a file. Each function adds one to the command line, with its options; once
// the words are parsed, the sub-command that they name runs, on the main thread.
#pragma once

namespace CLI {
class App;
}

namespace sorakaze::studio {

/// A sub-command throws StudioError when it can't do its work. One that ends with a status of its own sets
/// `status`, which is kDone before, and outlives `app`.
void AddAirCommand(CLI::App& app, int& status);
void AddRenderCommand(CLI::App& app, int& status);
void AddRehearseCommand(CLI::App& app, int& status);
void AddCheckCommand(CLI::App& app, int& status);
void AddListCommand(CLI::App& app, int& status);
void AddVoicesCommand(CLI::App& app, int& status);

}  // namespace sorakaze::studio
