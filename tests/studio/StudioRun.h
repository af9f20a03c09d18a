// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A station made for a test, the real studio run on it, and what came of it.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

struct Outcome {
    int status = -1;
    std::string out;
    std::string error;
};

class StudioStation : public TemporaryFolder {
  public:
    /// A station with the real `say`, no music and a home folder of its own.
    StudioStation();

    /// A sine of that amplitude, both channels.
    std::filesystem::path WriteTone(const std::string& name, double hertz, double amplitude,
                                    double seconds) const;

    /// The command line behind "sorakaze-studio"; `station` and the rest are quoted for the shell by the
    /// caller's `q`.
    Outcome Run(const std::string& arguments, const std::string& before = "") const;
    /// `render` of the program "Show" to `output` with these further options.
    Outcome Render(const std::string& output, const std::string& more = "",
                   const std::string& before = "") const;
};

/// Both channels of a sound file at its own rate, interleaved.
struct SoundFile {
    explicit SoundFile(const std::filesystem::path& file);

    int rate = 0;
    int channels = 0;
    std::vector<float> samples;

    double Seconds() const;
    /// Peak of the left channel between two ticks of a show at 48 kHz.
    double Peak(double fromTick, double toTick) const;
    /// The largest step from one sample to the next.
    double LargestStep() const;
};

std::string ReadFile(const std::filesystem::path& file);

/// The value of `field` in the trace's lines about `what`.
std::vector<std::string> TraceFields(const std::filesystem::path& trace, const std::string& what,
                                     const std::string& field);

}  // namespace sorakaze::test
