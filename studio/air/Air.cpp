// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/air/Air.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <stop_token>

#include "app/runtime/Signals.h"
#include "base/ScopeExit.h"
#include "sound/encoding/SoundFileWriter.h"
#include "studio/StudioError.h"
#include "studio/air/AirSession.h"

namespace sorakaze::studio {
namespace {

/// Without what may be a password.
std::string ShownTarget(const std::string& word) {
    const auto scheme = word.find("://");
    return scheme == std::string::npos ? word : word.substr(0, scheme + 3) + "...";
}

std::string LowerEnding(const std::filesystem::path& file) {
    std::string ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return ending;
}

}  // namespace

AirTargets ReadTargets(const std::vector<std::string>& words) {
    AirTargets targets;
    targets.device = words.empty();
    const auto endings = sound::SoundFileWriter::Endings();
    for (const std::string& word : words) {
        if (word == "device") {
            if (targets.device) throw StudioError(kWrongCall, "--to device is given twice.");
            targets.device = true;
            continue;
        }
        const std::filesystem::path file = word;
        if (word.find("://") != std::string::npos ||
            std::find(endings.begin(), endings.end(), LowerEnding(file)) == endings.end()) {
            throw StudioError(kWrongCall,
                              "--to " + ShownTarget(word) +
                                  ": name device, or a sound file: .wav, .flac, .opus, .ogg or .mp3.");
        }
        const auto place = std::filesystem::weakly_canonical(std::filesystem::absolute(file));
        if (std::find(targets.files.begin(), targets.files.end(), place) != targets.files.end())
            throw StudioError(kWrongCall, "--to " + word + " is given twice.");
        targets.files.push_back(place);
    }
    return targets;
}

void Air(const AirOptions& options) {
    AirSession* running = nullptr;
    std::filesystem::path temporary;
    std::mutex mutex;  // guards these: a signal may come before the session exists and after it has gone
    bool interrupted = false;
    std::stop_source stop;  // ends the search of a huge music folder, too
    const auto stopAtOnce = [&] {
        const std::lock_guard lock(mutex);
        interrupted = true;
        stop.request_stop();
        if (running) running->Interrupt();
    };
    SignalHandlers handlers{stopAtOnce, {}, {}, [&] {
                                const std::lock_guard lock(mutex);
                                std::error_code ignored;
                                if (!temporary.empty()) std::filesystem::remove_all(temporary, ignored);
                                for (const auto& file : options.targets.files)
                                    sound::SoundFileWriter::RemoveUnfinished(file.parent_path());
                            }};
    if (options.graceful) {
        handlers.onFirst = [&] {
            const std::lock_guard lock(mutex);
            interrupted = true;
            if (running)
                running->EndGracefully();
            else
                stop.request_stop();
        };
        handlers.onSecond = stopAtOnce;
    }
    handlers.onHangUp = [&] {
        const std::lock_guard lock(mutex);
        if (running) running->ReopenLog();
    };
    const Signals signals(std::move(handlers));
    AirSession session(options, stop.get_token());
    {
        const std::lock_guard lock(mutex);
        running = &session;
        temporary = session.FolderOfTheRun();
        if (interrupted) session.Interrupt();
    }
    const ScopeExit forget([&] {
        const std::lock_guard lock(mutex);
        running = nullptr;
    });
    session.Run();
}

}  // namespace sorakaze::studio
