// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::viewer {

enum class Datagrams { Allowed, Refused };

/// From here on this process and all that it starts can't signal, trace or slow down another process, which
/// holds among their own as well, and open no sockets but local ones and the internet's; without
/// `datagrams` not even names can be looked up. Does nothing where the kernel has no such filters. Throws
/// std::runtime_error.
void IsolateFromOtherProcesses(Datagrams datagrams);

}  // namespace sorakaze::viewer
