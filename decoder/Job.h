// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>

#include "base/FileDescriptor.h"
#include "sound/DecoderProtocol.h"

namespace sorakaze::decoder {

struct Job {
    sound::JobRequest request;
    FileDescriptor file;
    FileDescriptor socket;
    FileDescriptor ring;  ///< for Play
};

/// Waits for the application's next job. The size of its request as recvmsg returns it: 0 when the
/// application has closed the channel, -1 with errno for an error.
ssize_t ReceiveJob(int channel, Job& job);

}  // namespace sorakaze::decoder
