// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Render.h"

#include <memory>
#include <mutex>
#include <stop_token>
#include <string>

#include "app/runtime/Signals.h"
#include "sound/encoding/SoundFileWriter.h"
#include "studio/RenderSession.h"

namespace sorakaze::studio {
namespace {

/// Removes what a process that ends at once would leave.
void RemoveLeftovers(const std::filesystem::path& output, const std::filesystem::path& temporary) {
    std::error_code ignored;
    if (!temporary.empty()) std::filesystem::remove_all(temporary, ignored);
    if (!output.empty())
        sound::SoundFileWriter::RemoveUnfinished(std::filesystem::absolute(output).parent_path());
}

}  // namespace

void Render(const RenderOptions& options) {
    RenderSession* running = nullptr;
    std::filesystem::path temporary;
    std::mutex mutex;  // guards these: a signal may come before the session exists and after it has gone
    bool interrupted = false;
    std::stop_source stop;  // ends the search of a huge music folder, too
    const Signals signals(
        [&] {
            const std::lock_guard lock(mutex);
            interrupted = true;
            stop.request_stop();
            if (running) running->Interrupt();
        },
        [&] {
            const std::lock_guard lock(mutex);
            RemoveLeftovers(options.output, temporary);
        });
    RenderSession session(options, stop.get_token());
    {
        const std::lock_guard lock(mutex);
        running = &session;
        temporary = session.FolderOfTheRun();
        if (interrupted) session.Interrupt();
    }
    const auto forget = [&](void*) {
        const std::lock_guard lock(mutex);
        running = nullptr;
    };
    const std::unique_ptr<void, decltype(forget)> guard(&session, forget);
    session.Run();
}

}  // namespace sorakaze::studio
