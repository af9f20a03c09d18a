// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The program's first process: takes jobs from the application, forks a worker for each, and tells how the
// workers end. Kept warm, so that a worker costs a fork.
#pragma once

namespace sorakaze::decoder {

/// Until the application closes the channel, a socket of sequenced packets. Returns the exit status.
int TakeJobs(int channel);

}  // namespace sorakaze::decoder
