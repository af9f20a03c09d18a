// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A folder of a test's own (mode 0700, a blank and Japanese in its name) with a run's folder in it.
#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "base/FileDescriptor.h"
#include "process/ConfinedProcess.h"
#include "process/Mechanisms.h"
#include "tests/support/Await.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::process {

namespace fs = std::filesystem;

class Scratch {
  public:
    Scratch() {
        fs::create_directories(Folder());
        // As the system's folder of temporary files, everybody may pass the outermost.
        fs::permissions(folder_.Path(), fs::perms(0711));
        fs::permissions(root_, fs::perms::owner_all);
        fs::permissions(Folder(), fs::perms::owner_all);
    }

    /// Beside the run's folder.
    fs::path operator/(const std::string& name) const { return root_ / name; }
    fs::path Folder() const { return root_ / "書く folder"; }
    /// What a command is to make, for which its line has $O.
    fs::path Output() const { return Folder() / "out put"; }

    Confinement Bounds() const {
        Confinement confinement;
        confinement.folder = Folder();
        confinement.output = Output();
        confinement.searchFirst = confinement.readable = {ATTACKS_FOLDER};
        return confinement;
    }
    std::string Line(const std::string& line) const {
        return "IFS=; O='" + Output().string() + "' F='" + Folder().string() + "'; " + line;
    }
    CommandResult Run(const std::string& line) const { return ConfinedProcess(Line(line), Bounds()).Run(); }

    void Write(const std::string& name, const std::string& text) const { folder_.Write(root_ / name, text); }
    /// Waits until a command has written its output.
    void AwaitOutput() const {
        std::error_code failure;
        test::Await([&] { return fs::file_size(Output(), failure) != 0 && !failure; });
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

const std::pair<const char*, Mechanisms> kForces[] = {
    {"everything", kEverything},
    {"no Landlock", {0, true, true, true, true}},
    {"no view", {99, true, true, false, true}},
    {"no filter", {99, true, true, true, false}},
    {"no user namespace", {99, true, false, true, true}},
    {"no namespaces", kWithoutNamespaces},
    {"the first Landlock alone", {1, false, false, false, true}}};

/// Runs `body`, in which nothing is fatal, in a process of that user; as the user of the test where that
/// isn't root. True if all was as expected.
template <typename Body>
bool AsUser(uid_t user, const Body& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        const bool changed = ::geteuid() != 0 || user == 0 ||
                             (::setgroups(0, nullptr) == 0 && ::setgid(user) == 0 && ::setuid(user) == 0);
        // Without which no one of the same user looks into the process, and the kernel closes its /proc.
        ::prctl(PR_SET_DUMPABLE, 1);
        const auto* const results = testing::UnitTest::GetInstance()->current_test_info()->result();
        const int before = results->total_part_count();
        body();
        ::_exit(changed && results->total_part_count() == before ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0;
}

}  // namespace sorakaze::process
