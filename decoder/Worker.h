// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One job: what a process of its own does from its fork to its end. Nothing else in the program reads foreign
// bytes.
#pragma once

#include "base/FileDescriptor.h"
#include "sound/DecoderProtocol.h"

namespace sorakaze::decoder {

struct Job {
    sound::JobRequest request;
    FileDescriptor file;
    FileDescriptor socket;
    FileDescriptor ring;  ///< for Play
};

/// Confines the process and does the job. Returns its exit status.
int Work(Job job);

}  // namespace sorakaze::decoder
