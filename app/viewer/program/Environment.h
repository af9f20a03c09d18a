// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::viewer {

/// Removes all environment variables but those that the web engine needs to run a page and play sound: no
/// display, no buses, no home folder to write to, no options for other programs. Called first of all, while
/// there is one thread. Throws std::bad_alloc alone.
void CleanEnvironment();

}  // namespace sorakaze::viewer
