// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the decoder's processes may do and use. All of it is given up for good: a process that a file has
// taken over can't take any of it back. On top of it stands what the application confined the program with.
#pragma once

#include <chrono>
#include <cstdint>

namespace sorakaze::decoder {

/// For the program's first process, once it has started: it opens no file any more, holds no privilege, and
/// makes no calls but those of its work and its workers'. What a kernel doesn't offer is left out.
void BoundProgram();

/// For a worker, before it reads a byte of its file: it starts no process, signals nobody, and allocates at
/// most `memory` bytes more than it has. `threads` is whether it may start threads.
enum class Threads { None, Some };
void BoundWorker(std::uint64_t memory, Threads threads);

/// The worker ends when it uses more processor time than this before the next call.
void AllowTime(std::chrono::milliseconds processorTime);

}  // namespace sorakaze::decoder
