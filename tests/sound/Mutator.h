// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Damages real sound files the way that hostile ones are made: flipped bits, runs of one byte, cuts, doubled
// and swapped stretches, sizes at their extremes, two formats in one file. The same numbers give the same
// bytes on every machine.
#pragma once

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace sorakaze::sound::testing {

struct SampleFile {
    std::string ending;
    std::string bytes;
};

/// Less than a second of sound in each of the formats that people keep music in, some with covers, chapters
/// and pictures. Made by the ffmpeg program, some 200 kB in all. Throws std::runtime_error.
std::vector<SampleFile> MakeSampleFiles();

class Mutator {
  public:
    /// `samples` outlive it and are two at least.
    Mutator(const std::vector<SampleFile>& samples, std::uint64_t seed) : samples_(samples), seed_(seed) {}

    /// Depends on the seed and `number` alone.
    SampleFile Make(std::uint64_t number) const;

  private:
    const std::vector<SampleFile>& samples_;
    const std::uint64_t seed_;
};

}  // namespace sorakaze::sound::testing
