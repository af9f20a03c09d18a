// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <random>

#include "app/runtime/Runtime.h"

namespace sorakaze {

/// A source of random numbers. Where the runtime has a seed, each new one continues the same series of seeds.
class Random {
  public:
    Random() : seed_(Runtime::Current().NextSeed()) {}

    /// A number between the two, both included; `low` where high lies below it.
    std::int32_t InRange(std::int32_t low, std::int32_t high) {
        if (high <= low) return low;
        const auto span = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - low) + 1;
        // Numbers above the last whole multiple of the span would favour the low end.
        const std::uint64_t bound = (std::uint64_t{1} << 32) / span * span;
        // Not before: most are made in every tick and asked for nothing, and a generator's state is 2.5 kB.
        if (!numbers_) numbers_.emplace(seed_);
        std::uint64_t number = (*numbers_)();
        while (number >= bound) number = (*numbers_)();
        return static_cast<std::int32_t>(low + static_cast<std::int64_t>(number % span));
    }

  private:
    std::uint32_t seed_;
    std::optional<std::mt19937> numbers_;
};

}  // namespace sorakaze
