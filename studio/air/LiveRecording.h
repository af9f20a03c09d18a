// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Writes what is on the air to a file, on a thread of its own. What a slow disk leaves no room for is dropped
// and counted.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "sound/MixingEngine.h"
#include "sound/TapRing.h"
#include "sound/encoding/SoundFileWriter.h"

namespace sorakaze::studio {

class LiveRecording {
  public:
    /// Begins at once. `engine` outlives it. Throws sound::SoundFileError.
    LiveRecording(sound::MixingEngine& engine, const std::filesystem::path& file);
    /// Without Finish nothing is left of the file.
    ~LiveRecording();
    LiveRecording(const LiveRecording&) = delete;
    LiveRecording& operator=(const LiveRecording&) = delete;

    /// One line for people, once, when the recording has failed; otherwise empty.
    std::string TakeTrouble();
    /// Writes what is left and completes the file. Returns a complaint; empty if all is well.
    std::string Finish();

  private:
    void Run();
    void Stop();

    sound::MixingEngine& engine_;
    std::unique_ptr<sound::SoundFileWriter> writer_;
    sound::TapRing ring_{sound::Frames{30 * sound::kSampleRate}};
    std::mutex mutex_;  ///< guards these
    std::condition_variable ended_;
    bool ending_ = false;
    bool failed_ = false;
    std::string trouble_;
    std::thread thread_;
};

}  // namespace sorakaze::studio
