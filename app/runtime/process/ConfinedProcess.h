// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Runs one command line through /bin/sh, confined. Texts from tags and from the web reach this shell, where
// $(...), backquotes and backslashes are live; so whatever runs here can read what programs need and write
// nothing but one folder, reaches no network, sees no other process, and has bounded memory, processes, file
// sizes and time. It dies with the application.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace sorakaze::process {

struct Confinement {
    /// The only folder that may be written. Owned by the application, mode 0700. A command makes ordinary
    /// files and folders there, no links that lead out, no pipes, and nothing that can be started as a
    /// program.
    std::filesystem::path writableFolder;
    /// Files and folders that may be read and executed beside the system's own programs, libraries and data.
    std::vector<std::filesystem::path> readable;
    /// Folders that the PATH of the command begins with, first come first searched. They may be read.
    std::vector<std::filesystem::path> searchFirst;

    std::chrono::milliseconds wallTime{60'000};  ///< then everything of the command is killed
    std::chrono::seconds processorTime{30};      ///< of each process
    std::uint64_t addressSpace = 768ull << 20;   ///< bytes, of each process; all together may fill twice that
    std::uint64_t fileSize = 256ull << 20;       ///< bytes, of each file written
    /// Bytes in writableFolder, all files together; then killed, and what appeared there meanwhile is
    /// removed, since the folder would stay above its bound for every later command.
    std::uint64_t folderSize = 512ull << 20;
    std::uint64_t outputSize = 4ull << 20;  ///< bytes of standard output kept; more is read and dropped
    unsigned processes = 32;                ///< at the same time
};

struct CommandResult {
    /// The exit status; 128 + signal for a command that a signal ended; 127 where nothing could be started.
    int status = 0;
    /// What the command wrote to standard output. Standard error is dropped.
    std::string output;
    bool killed = false;    ///< Kill was called
    bool timedOut = false;  ///< a bound of the confinement ended it
};

/// One run of one command line. Run blocks the calling thread; Kill may come from any other thread, before,
/// during and after, and ends every process of the command.
class ConfinedProcess {
  public:
    ConfinedProcess(std::string commandLine, Confinement confinement);
    ~ConfinedProcess();
    ConfinedProcess(const ConfinedProcess&) = delete;
    ConfinedProcess& operator=(const ConfinedProcess&) = delete;

    /// Returns when the command has ended and no process of it is left: what the line leaves in the
    /// background ends with its shell. Never throws for what the command does. Where the confinement can't be
    /// put in force nothing is started, and the first such line says why on standard error.
    CommandResult Run();
    void Kill();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// Makes `folder` (which exists and is the caller's) usable as a writable folder of confined commands. Called
/// once for the run's temporary folder: as root, commands run under a user of their own, and the folder
/// becomes that user's. Throws std::filesystem::filesystem_error.
void PrepareWritableFolder(const std::filesystem::path& folder);

/// What this kernel confines with, strongest first ("landlock, namespaces, seccomp, limits"), and what is
/// missing (empty when all is there). The first command that runs with something missing says so once on
/// standard error.
struct ConfinementSupport {
    std::string inForce;
    std::string missing;
};
ConfinementSupport QueryConfinementSupport();

}  // namespace sorakaze::process
