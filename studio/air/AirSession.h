// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "app/runtime/Thread.h"
#include "host/StationHost.h"
#include "onair/AsRunLog.h"
#include "show/ShowState.h"
#include "sound/MixingEngine.h"
#include "studio/Console.h"
#include "studio/ConsoleHost.h"
#include "studio/FailureLines.h"
#include "studio/PageSpeaker.h"
#include "studio/ShowProgress.h"
#include "studio/ShowSummary.h"
#include "studio/Transcript.h"
#include "studio/air/Air.h"
#include "studio/air/AirOutputs.h"
#include "studio/air/DeadAir.h"

namespace sorakaze::studio {

/// Shows one after another on the wall clock. Main thread, where nothing else is said.
class AirSession {
  public:
    /// `options` outlives the session. Throws StudioError. From when a stop is requested of `interrupted`,
    /// nothing waits for a decoder or for the search for music.
    AirSession(const AirOptions& options, std::stop_token interrupted);
    ~AirSession();
    AirSession(const AirSession&) = delete;
    AirSession& operator=(const AirSession&) = delete;

    std::filesystem::path FolderOfTheRun() { return station_.GetRuntime().FolderOfTheRun(); }

    // Any thread:

    /// Stops the show as its button would; it was the last one.
    void Interrupt();
    /// Fades the track out and lets the show's ending follow; it was the last one.
    void EndGracefully();
    void ReopenLog();

    /// Returns when the last show is over. Throws StudioError.
    void Run();

  private:
    void StartServices();
    void CheckShows();
    /// False when the wait was interrupted.
    bool AwaitStart();
    /// Whether anything was heard.
    bool RunShow(const AirShow& show);
    void AwaitThreads();
    /// Handles events for so long, or until the end.
    void PauseFor(double seconds);
    void StopShow();
    /// Four times a second, on a thread of the logic.
    void Watch();
    void WatchSilence();
    void FadeForEnding();
    void TellNews();
    void ReportShow();
    void Note(std::string_view what, const std::string& text);
    void TellSilentPage(const std::string& why);
    double Seconds() { return std::chrono::duration<double>(station_.GetRuntime().GetClock().Now()).count(); }

    const AirOptions& options_;
    const std::filesystem::path folder_;
    Console console_;
    ConsoleHost host_;
    sound::MixingEngine engine_{sound::MixingMode::RealTime};
    SoundTap tap_;
    std::unique_ptr<onair::AsRunLog> log_;  ///< null: none
    StationHost station_;
    mainWindow& window_;
    PageSpeaker speaker_;
    Transcript transcript_;
    ShowProgress progress_;
    ShowSummary summary_;
    FailureLines failureLines_;
    DeadAir deadAir_;
    std::unique_ptr<AirOutputs> outputs_;
    Thread watch_;
    std::optional<ShowHooks> hooks_;  ///< there while no show may start
    std::uint64_t heardBlocks_ = 0;   ///< of the tap, at the last look
    bool begun_ = false;
    bool ending_ = false;  ///< no other show follows
    bool graceful_ = false;
    bool restart_ = false;
    std::string verdict_;
};

}  // namespace sorakaze::studio
