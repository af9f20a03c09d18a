// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Shell.h"

#include <chrono>
#include <limits>
#include <stop_token>
#include <utility>

#include "app/runtime/Runtime.h"
#include "process/ConfinedProcess.h"

namespace sorakaze {

void Shell::Execute(const String& command, const FolderItemRef& output) {
    auto& runtime = Runtime::Current();
    result_ = String();
    errorCode_ = 127;  // as a shell has it for what could not be started
    if (runtime.TemporaryFolder().empty()) return;
    process::Confinement confinement;
    confinement.folder = runtime.TemporaryFolder();
    if (output) confinement.output = output->Path();
    process::OfferPrograms(confinement, runtime.ResourcesFolder());
    // The longest sentence takes seconds; a title that makes the shell wait must not hold up a show for long.
    confinement.wallTime = std::chrono::seconds(20);
#ifdef __SANITIZE_ADDRESS__
    // A program of ours that is built with the sanitizer reserves terabytes of addresses.
    confinement.addressSpace = std::numeric_limits<std::uint64_t>::max();
#endif
    process::ConfinedProcess process(command.Bytes(), std::move(confinement));
    process::CommandResult result;
    runtime.Threads().Block(Blocking::ClockStopped, [&](std::stop_token cancelled) {
        const std::stop_callback kill(cancelled, [&process] { process.Kill(); });
        result = process.Run();
    });
    result_ = std::move(result.output);
    errorCode_ = result.status;
}

}  // namespace sorakaze
