// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::decoder {

enum class CallSet {
    ForkServer,      ///< take jobs, fork workers, wait for them and kill them
    ThreadedWorker,  ///< read the file, use memory, answer
    Worker,          ///< the same in one thread
};

/// The only priority that a process of the program may give itself, as setpriority has it.
inline constexpr int kLowestPriority = 19;

/// From here on the calling process, and all that it starts, can make these system calls alone; every other
/// one fails with ENOSYS. A later call can only forbid more. Does nothing on a kernel without such filters.
void AllowCalls(CallSet set);

}  // namespace sorakaze::decoder
