// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads a program file as its writer meant it and tells where the loader and the interpreter will make
// something else of it. Called by the studio. It changes nothing and opens nothing: what it must know of the
// station it asks its Surroundings.
#pragma once

#include <string_view>
#include <vector>

#include "program/check/Finding.h"
#include "program/check/Surroundings.h"

namespace sorakaze::check {

/// `text` is the file's; what isn't UTF-8 in it is for the caller to tell of.
std::vector<Finding> CheckProgram(std::string_view text, Surroundings& surroundings);

}  // namespace sorakaze::check
