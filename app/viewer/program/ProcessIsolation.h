// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::viewer {

enum class Datagrams { Allowed, Refused };

/// Keeps this process and all that it starts from signalling, tracing or slowing down any other process,
/// their own included, and from opening sockets other than local ones and the internet's. Without `datagrams`
/// no names can be resolved either. Does nothing where the kernel has no such filters. Throws
/// std::runtime_error.
void IsolateFromOtherProcesses(Datagrams datagrams);

}  // namespace sorakaze::viewer
