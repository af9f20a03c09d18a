// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::viewer {

/// Leaves the process nothing but what the web engine needs to run a page and to be heard: no display, no
/// buses, no home folder to leave traces in, no options that were meant for other programs of the user's.
/// Called first of all, while there is one thread. Throws std::bad_alloc alone.
void CleanEnvironment();

}  // namespace sorakaze::viewer
