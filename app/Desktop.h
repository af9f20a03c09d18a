// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop application: puts the show's window, the loudspeaker, the user's music and the desktop's own
// services together, and brings them up and down in their order.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>

#include "app/FailureLog.h"
#include "app/desktop/Mpris.h"
#include "app/desktop/SingleInstance.h"
#include "app/output/Loudspeaker.h"
#include "app/viewer/Viewer.h"
#include "app/window/QtHost.h"
#include "app/window/QtLoop.h"
#include "app/window/WindowView.h"
#include "gateway/StandIn.h"
#include "player/LocalPlayer.h"

namespace sorakaze {

// NOLINTBEGIN(bugprone-reserved-identifier)
class Desktop {
  public:
    /// From when a stop is asked of `interrupted`, on any thread, nothing waits for the music to be looked
    /// through.
    explicit Desktop(std::filesystem::path appFolder, std::stop_token interrupted = {});
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// Starts up and runs the event loop until the application quits.
    void _Main();
    /// Another instance was started for this folder, or a panel asks for the window.
    void Raise();
    /// Ends everything at once. Main thread.
    void Quit();
    /// Called once, on the main thread, when the end begins.
    std::function<void()> onQuit;

    /// The run's own; empty where none can be made.
    /// Of the run's temporary files; for whoever ends the process at once.
    std::filesystem::path FolderOfTheRun() { return runtime_.FolderOfTheRun(); }

  private:
    void _Startup();
    void _MakeDefaultView();
    void _RuntimeRun();
    void _UnhandledException(std::exception_ptr exception);

    /// Where the deployment names no services, those that the application brings itself. A deployment that
    /// can't be used is told of; the defaults stand, but nothing is looked up.
    void OfferServices();
    void WatchTheShow();
    void OnTrack(const player::TrackEvent& event);
    /// Tells the desktop what is on. Called with the baton.
    void Announce();

    const std::filesystem::path appFolder_;
    sound::MixingEngine engine_{sound::Reading::RealTime};
    std::stop_callback<std::function<void()>> onInterrupt_;  ///< nobody waits for a decoder any more
    window::QtHost host_;
    player::LocalPlayer player_;
    Runtime runtime_;
    window::QtLoop loop_{runtime_};
    FailureLog failureLog_;
    std::unique_ptr<mainWindow> window_;
    std::unique_ptr<window::WindowView> view_;
    std::unique_ptr<output::Loudspeaker> loudspeaker_;
    std::unique_ptr<gateway::Gateway> gateway_;
    bool ownVoice_ = false;  ///< the gateway speaks; set before the first show
    std::unique_ptr<viewer::Viewer> viewer_;
    std::unique_ptr<desktop::Mpris> mpris_;
    desktop::NowPlaying nowPlaying_;  ///< for the baton's holder
};
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace sorakaze
