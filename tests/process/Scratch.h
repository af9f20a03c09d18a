// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A folder of a test's own (mode 0700, a blank and Japanese in its name) with the commands' writable folder
// in it.
#pragma once

#include <gtest/gtest.h>

#include <thread>

#include "app/runtime/process/ConfinedProcess.h"
#include "app/runtime/process/Descriptor.h"
#include "app/runtime/process/Mechanisms.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::process {

namespace fs = std::filesystem;

class Scratch {
  public:
    Scratch() {
        fs::create_directories(Folder());
        fs::permissions(Folder(), fs::perms::owner_all);
        PrepareWritableFolder(Folder());
    }

    /// Beside the writable folder.
    fs::path operator/(const std::string& name) const { return root_ / name; }
    fs::path Folder() const { return root_ / "書く folder"; }

    Confinement Bounds() const {
        Confinement confinement;
        confinement.writableFolder = Folder();
        confinement.searchFirst = {ATTACKS_FOLDER};
        return confinement;
    }
    CommandResult Run(const std::string& line) const { return ConfinedProcess(line, Bounds()).Run(); }

    void Write(const std::string& name, const std::string& text) const { folder_.Write(root_ / name, text); }
    /// Waits until a command has made the file.
    void Await(const std::string& name) const {
        while (!fs::exists(Folder() / name)) std::this_thread::yield();
    }

  private:
    const test::TemporaryFolder folder_;
    const fs::path root_ = folder_ / "confined 試験";
};

/// While it lives, commands run under these mechanisms at most.
struct Under {
    explicit Under(const Mechanisms& most) { LimitMechanisms(most); }
    ~Under() { LimitMechanisms(std::nullopt); }
};

/// In the order of Mechanisms' members; to be taken away one by one.
constexpr Mechanisms kEverything{99, true, true, true, true};
constexpr Mechanisms kWithoutNamespaces{99, false, false, false, true};

}  // namespace sorakaze::process
