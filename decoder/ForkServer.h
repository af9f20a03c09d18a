// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The program's first process: takes jobs from the application, forks a worker for each, and reports how the
// workers end. Its libraries are initialised, so that a worker costs no more than a fork.
#pragma once

namespace sorakaze::decoder {

/// Serves jobs until the application closes `channel`, a socket of sequenced packets. Returns the exit
/// status.
int RunForkServer(int channel);

}  // namespace sorakaze::decoder
