// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Runs a program that may hang, crash or never stop writing. What it has started ends with it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

struct ChildBounds {
    std::chrono::steady_clock::time_point deadline;
    std::uint64_t output = 64u << 20;    ///< bytes of standard output
    std::uint64_t file = 64u << 20;      ///< bytes of each file written
    std::uint64_t memory = 1200u << 20;  ///< bytes that it fills, not what it reserves
};

/// The program exceeded a bound or ended with an error; one line for the user, without the program's name.
struct ChildFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Takes what the program writes to its standard output, piece by piece.
using ChildOutput = std::function<void(std::string_view bytes)>;

/// Runs `program` with `input` as its standard input until it ends. Throws ChildFailure; passes on what
/// `output` throws. The program has ended in any case.
void RunChild(const std::vector<std::string>& program, std::string_view input, const ChildBounds& bounds,
              const ChildOutput& output);

}  // namespace sorakaze::speech
