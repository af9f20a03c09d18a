// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::decoder {

enum class Calls {
    OfProgram,            ///< take jobs, fork workers, hear of their ends and end them
    OfWorkerWithThreads,  ///< read the file, use memory, answer
    OfWorker,             ///< the same in one thread
};

/// From here on the calling process, and all that it starts, can make these system calls alone; every other
/// one fails as if the kernel didn't know it. A later call can only take more away. Does nothing on a kernel
/// without such filters.
void AllowCalls(Calls calls);

}  // namespace sorakaze::decoder
