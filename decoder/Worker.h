// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One job: what a process of its own does from its fork to its end. Nothing else in the program reads foreign
// bytes.
#pragma once

#include "decoder/Job.h"

namespace sorakaze::decoder {

/// Confines the process and does the job. Returns its exit status.
int Work(Job job);

}  // namespace sorakaze::decoder
