// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the output's tests share.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "app/runtime/sound/MixingEngine.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::output::testing {

/// An environment variable, set back with its scope. No thread of an output may run at either end.
class Variable {
  public:
    Variable(const char* name, const std::string& value);
    ~Variable();
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* name_;
    std::optional<std::string> before_;
};

/// The float samples that a file holds, without any header.
sound::testing::Samples ReadSamples(const std::filesystem::path& file);

/// Waits for something that happens by itself, a generous time for a busy machine. False when it never does.
bool Eventually(const std::function<bool()>& happens);

/// For two seconds and longer, the frames mixed are those that the steady clock asks for, two blocks more or
/// less.
bool MixesInTrueTime(const sound::MixingEngine& engine);

}  // namespace sorakaze::output::testing
