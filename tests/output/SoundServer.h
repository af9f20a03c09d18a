// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A sound server of the test's own, with one device that nobody hears, and a recorder behind it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/output/OutputTesting.h"
#include "tests/sound/SoundTesting.h"
#include "tests/support/Program.h"

namespace sorakaze::output::testing {

class SoundServer {
  public:
    static bool IsInstalled();

    /// Sets the environment so that this process plays on the server. It doesn't run yet.
    SoundServer();

    /// Starts it and waits until it takes connections; false when it doesn't.
    bool Start();
    void Kill() { program_.reset(); }
    /// It holds still, with all its connections, or goes on.
    void Freeze() const;
    void Thaw() const;

    /// Records what is heard until the level has been above a tenth for half a second; the left channel of
    /// that half second. Empty when nothing is heard.
    sound::testing::Samples Hear();

  private:
    sound::testing::ScratchFolder folder_;
    std::string socket_;
    std::vector<std::unique_ptr<Variable>> environment_;
    std::unique_ptr<test::Program> program_;
};

}  // namespace sorakaze::output::testing
