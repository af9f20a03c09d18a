// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Runs one command line through /bin/sh, confined. Texts from tags and from the web reach this shell, where
// $(...), backquotes and backslashes are live; so whatever runs here can read what programs need and write
// nothing but a folder of its own and the one file that it is to make, reaches no network, sees no other
// process, and has bounded memory, processes, file sizes and time. It dies with the application.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sorakaze::process {

struct Confinement {
    /// A folder of the application's, mode 0700, that exists. The command sees none of what is in it: it has
    /// a folder of its own, empty, private and gone with it, which is its HOME, its TMPDIR and its working
    /// folder. If the kernel supports it, that folder is mounted at this path; otherwise it is made in here.
    /// Ordinary files and folders can be made there, no links, no pipes, nothing that can be started as a
    /// program, and nothing that grants rights to whoever starts it.
    std::filesystem::path folder;
    /// The file in `folder` that the command is to make, or empty. It exists, empty, when the command begins.
    /// Afterwards it exists if something was written and the command ended by itself: then it is an ordinary
    /// file of the application's own, mode 0600.
    std::filesystem::path output;
    /// Files and folders that may be read and executed beside the system's own programs, libraries and data.
    std::vector<std::filesystem::path> readable;
    /// Folders at the beginning of the command's PATH. Only what is among `readable` is found there.
    std::vector<std::filesystem::path> searchFirst;
    /// Variables of the command's environment beside PATH, HOME, TMPDIR and LANG, as "NAME=VALUE".
    std::vector<std::string> variables;

    std::chrono::milliseconds wallTime{60'000};  ///< then all processes of the command are killed
    std::chrono::seconds processorTime{30};      ///< of each process
    std::uint64_t addressSpace = 768ull << 20;   ///< bytes that each process may reserve
    std::uint64_t memory = 1536ull << 20;        ///< bytes that all processes may use together
    std::uint64_t fileSize = 128ull << 20;       ///< bytes, of each file written
    std::uint64_t folderSize = 192ull << 20;     ///< bytes in the command's folder, all files together
    std::uint64_t outputSize = 4ull << 20;       ///< bytes of standard output kept; more is read and dropped
    unsigned processes = 32;                     ///< at the same time
};

/// What a command was ended for.
enum class ExceededLimit { WallTime, ProcessorTime, FileSize, FolderSize, Processes, Memory };

struct CommandResult {
    /// The exit status; 128 + signal for a command that a signal ended; 127 where nothing could be started.
    int status = 0;
    /// What the command wrote to standard output.
    std::string output;
    /// The beginning of what it wrote to standard error, 4096 bytes at most.
    std::string errors;
    bool killed = false;  ///< Kill was called
    /// Empty for a command that ended by itself or was killed.
    std::optional<ExceededLimit> exceeded;
};

/// One run of one command line. Run blocks the calling thread; Kill may come from any other thread, before,
/// during and after, and ends every process of the command.
class ConfinedProcess {
  public:
    ConfinedProcess(std::string commandLine, Confinement confinement);
    ~ConfinedProcess();
    ConfinedProcess(const ConfinedProcess&) = delete;
    ConfinedProcess& operator=(const ConfinedProcess&) = delete;

    /// Returns when the command has ended and no process of it is left: background processes are killed when
    /// its shell ends. Never throws for what the command does. If the confinement can't be enforced nothing
    /// is started, and the first time the reason is printed on standard error.
    CommandResult Run();
    void Kill();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// Lets commands find the application's own programs in its Resources, and the voices of the user's own
/// (process/VoicePlaces.h) and how they say names (process/PronunciationPlaces.h). Where one of these is a
/// neural model, raises the bounds as its runtime needs.
void OfferPrograms(Confinement& confinement, const std::filesystem::path& resources);

/// The mechanisms that this kernel has, strongest first ("landlock, namespaces, seccomp, limits"), and what
/// is missing (empty when all is there). What is missing is reported on standard error once, with the first
/// command.
struct ConfinementSupport {
    std::string inForce;
    std::string missing;
};
ConfinementSupport QueryConfinementSupport();

}  // namespace sorakaze::process
