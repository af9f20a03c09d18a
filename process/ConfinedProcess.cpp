// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/ConfinedProcess.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <optional>
#include <system_error>

#include "process/Footprint.h"
#include "process/Launch.h"
#include "process/LaunchPlan.h"
#include "process/Mechanisms.h"
#include "process/OfferPronunciations.h"
#include "process/OfferVoices.h"
#include "process/Workspace.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int kCannotStart = 127;
constexpr int kEndedBySignal = 128;
/// How often a running command's use of memory and disk is measured.
constexpr auto kCheckInterval = 100ms;
constexpr std::uint64_t kMostErrors = 4096;

void WarnOfMissingMechanisms() {
    static std::once_flag told;
    std::call_once(told, [] {
        const ConfinementSupport support = QueryConfinementSupport();
        if (!support.missing.empty())
            std::fprintf(stderr, "Sorakaze: commands run confined by %s only; this system lacks: %s\n",
                         support.inForce.c_str(), support.missing.c_str());
    });
}

int ExitStatus(int waited) {
    return WIFEXITED(waited) ? WEXITSTATUS(waited) : kEndedBySignal + WTERMSIG(waited);
}

/// Reads what there is, but not for longer than a moment, since a command may write faster than this reads.
/// False when there is nothing more for now. What goes beyond `most` is dropped, so that the command never
/// blocks on it.
bool Drain(int descriptor, std::uint64_t most, std::string& output) {
    char buffer[64 << 10];
    for (int turn = 0; turn < 32; ++turn) {
        const ssize_t length = ::read(descriptor, buffer, sizeof buffer);
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) return false;
        const auto room = most - std::min<std::uint64_t>(most, output.size());
        output.append(buffer, std::min<std::uint64_t>(room, static_cast<std::uint64_t>(length)));
    }
    return true;
}

}  // namespace

struct ConfinedProcess::Impl {
    Impl(std::string line, Confinement bounds)
        : commandLine(std::move(line)), confinement(std::move(bounds)) {}

    const std::string commandLine;
    const Confinement confinement;

    std::mutex mutex;
    // Both guarded by mutex. Kill writes the first and reads the second, Run the other way round.
    bool killed = false;
    Launched* running = nullptr;

    CommandResult Run();
    void Kill();

  private:
    void Follow(Launched& launched, CommandResult& result);
    void WaitForEnd(Launched& launched, CommandResult& result);
    std::optional<ExceededLimit> CheckLimits(const Launched& launched) const;

    fs::path folderOnDisk;  ///< the command's; empty where it is on none
};

void ConfinedProcess::Impl::Kill() {
    const std::lock_guard lock(mutex);
    killed = true;
    if (running) EndAll(*running);
}

std::optional<ExceededLimit> ConfinedProcess::Impl::CheckLimits(const Launched& launched) const {
    const ProcessesFootprint processes =
        MeasureProcesses(launched.supervisor, folderOnDisk, confinement.fileSize);
    if (processes.processes > confinement.processes + 1) return ExceededLimit::Processes;
    if (processes.memory > confinement.memory) return ExceededLimit::Memory;
    if (processes.removedFiles > confinement.folderSize) return ExceededLimit::FolderSize;
    if (folderOnDisk.empty()) return {};  // the kernel limits its size
    const std::uint64_t room = confinement.folderSize - processes.removedFiles;
    if (FolderBytes(folderOnDisk, room) > room) return ExceededLimit::FolderSize;
    return {};
}

void ConfinedProcess::Impl::WaitForEnd(Launched& launched, CommandResult& result) {
    const Clock::time_point deadline = Clock::now() + confinement.wallTime;
    Clock::time_point nextCheck = Clock::now() + kCheckInterval;
    const auto end = [&](ExceededLimit limit) {
        result.exceeded = limit;
        const std::lock_guard lock(mutex);
        EndAll(launched);
    };
    pollfd events[] = {{launched.process.Get(), POLLIN, 0},
                       {launched.output.Get(), POLLIN, 0},
                       {launched.errors.Get(), POLLIN, 0}};
    const auto read = [](pollfd& event, std::uint64_t most, std::string& text) {
        if (event.revents & POLLIN) Drain(event.fd, most, text);
        // Everything may have closed its end and still run.
        else if (event.revents != 0)
            event.fd = -1;
    };
    while (!(events[0].revents & POLLIN)) {
        const Clock::time_point now = Clock::now();
        if (!result.exceeded && now >= deadline) end(ExceededLimit::WallTime);
        if (!result.exceeded && now >= nextCheck) {
            if (const auto limit = CheckLimits(launched)) end(*limit);
            nextCheck = Clock::now() + kCheckInterval;
        }
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(std::min(nextCheck, deadline) - now);
        ::poll(events, std::size(events),
               result.exceeded ? -1 : static_cast<int>(std::max<std::int64_t>(wait.count(), 0)));
        read(events[1], confinement.outputSize, result.output);
        read(events[2], kMostErrors, result.errors);
    }
    // Nobody is left to write.
    while (Drain(launched.output.Get(), confinement.outputSize, result.output)) {
    }
    while (Drain(launched.errors.Get(), kMostErrors, result.errors)) {
    }
}

void ConfinedProcess::Impl::Follow(Launched& launched, CommandResult& result) {
    {
        const std::lock_guard lock(mutex);
        running = &launched;
        if (killed) EndAll(launched);
    }
    WaitForEnd(launched, result);
    {
        const std::lock_guard lock(mutex);
        running = nullptr;
    }
    const LaunchReport report = AwaitEnd(launched);
    switch (report.what) {
        case LaunchReport::Ended:
            result.status = ExitStatus(report.value);
            break;
        case LaunchReport::Failed:
            throw std::system_error(report.value, std::generic_category(), report.where);
        case LaunchReport::Nothing:  // ended from outside
            result.status = kEndedBySignal + SIGKILL;
            break;
    }
    if (result.status == kEndedBySignal + SIGXCPU) result.exceeded = ExceededLimit::ProcessorTime;
    if (result.status == kEndedBySignal + SIGXFSZ) result.exceeded = ExceededLimit::FileSize;
}

CommandResult ConfinedProcess::Impl::Run() {
    CommandResult result;
    result.status = kEndedBySignal + SIGKILL;
    const auto killWasCalled = [this] {
        const std::lock_guard lock(mutex);
        return killed;
    };
    if (!killWasCalled()) {
        try {
            WarnOfMissingMechanisms();
            const Mechanisms mechanisms = AvailableMechanisms();
            Workspace workspace(confinement, mechanisms);
            if (workspace.FolderIsOnDisk()) folderOnDisk = fs::canonical(workspace.Folder());
            LaunchPlan plan = PlanCommand(commandLine, confinement, workspace, mechanisms);
            Launched launched = Launch(plan);
            Follow(launched, result);
            if (!result.exceeded && !killWasCalled()) workspace.TakeOutput();
        } catch (const std::exception& failure) {
            ReportOnce(std::string("Sorakaze: a command could not be started: ") + failure.what());
            result.status = kCannotStart;
        }
    }
    result.killed = killWasCalled();
    return result;
}

ConfinedProcess::ConfinedProcess(std::string commandLine, Confinement confinement)
    : impl_(std::make_unique<Impl>(std::move(commandLine), std::move(confinement))) {}
ConfinedProcess::~ConfinedProcess() = default;
CommandResult ConfinedProcess::Run() {
    return impl_->Run();
}
void ConfinedProcess::Kill() {
    impl_->Kill();
}

void OfferPrograms(Confinement& confinement, const fs::path& resources) {
    confinement.searchFirst.push_back(resources);
    // The second of the programs has a dictionary beside it, if the user gave it one.
    for (const char* name : {"say", "SayKotoeri", "ipadic"}) confinement.readable.push_back(resources / name);
    OfferVoices(confinement, resources);
    OfferPronunciations(confinement, resources);
}

}  // namespace sorakaze::process
