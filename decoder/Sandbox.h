// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The sandbox of the decoder's processes. What a process gives up is gone for good: one that a file has taken
// over can't regain it. The application has confined the whole program besides (process/ConfinedHelper.h).
#pragma once

#include <chrono>
#include <cstdint>

namespace sorakaze::decoder {

/// For the fork server, once it has started: it opens no file any more, holds no privilege, and makes only
/// the system calls that it and its workers need. What the kernel doesn't offer is left out.
void SandboxForkServer();

/// For a worker, before it reads a byte of its file: it starts no process, sends no signal, and allocates at
/// most `memory` bytes more than it has.
enum class Threads { None, Some };
void SandboxWorker(std::uint64_t memory, Threads threads);

/// For a worker, before SandboxWorker: from here on it runs only while no other process wants the processor,
/// or with the least share where the system has no such rank.
void UseIdleTime();

/// Kills the worker when it uses more processor time than this before the next call.
void LimitProcessorTime(std::chrono::milliseconds processorTime);

}  // namespace sorakaze::decoder
