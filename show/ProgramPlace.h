// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "app/runtime/String.h"

namespace sorakaze {

/// A line of a program file, for onlookers: messages and failures name it.
struct ProgramPlace {
    String program;         ///< the file's name without its ending
    std::int32_t line = 0;  ///< 1-based; 0: none
};

/// The line that the calling thread loads or carries out. It stays set when an exception ends that, so that
/// whoever reports the exception can name it.
inline ProgramPlace& CurrentPlace() {
    thread_local ProgramPlace place;
    return place;
}

}  // namespace sorakaze
