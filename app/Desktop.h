// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop application: a station with a window on the screen, the loudspeaker, and the desktop's media
// keys and panels. Starts and ends them in order. Main thread, except where stated otherwise.
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
#include "host/StationHost.h"

namespace sorakaze {

// NOLINTBEGIN(bugprone-reserved-identifier)
class Desktop {
  public:
    /// From when a stop is requested of `interrupted`, on any thread, nothing waits for the search for music.
    explicit Desktop(std::filesystem::path appFolder, std::stop_token interrupted = {});
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// Starts up and runs the event loop until the application quits.
    void _Main();
    /// Brings the window to the front.
    void Raise();
    /// Ends everything at once.
    void Quit();
    /// Called once, when the end begins.
    std::function<void()> onQuit;

    /// The run's temporary files, for whoever ends the process at once. Empty if there is no such folder.
    std::filesystem::path FolderOfTheRun() { return Runtime().FolderOfTheRun(); }

  private:
    void _Startup();
    void _InitFileTypes();
    void _NewAppInstance();
    void _ApplicationAddMenuHandlers();
    void _MakeDefaultView();
    void _RuntimeRun();
    void _UnhandledException(std::exception_ptr exception);

    sorakaze::Runtime& Runtime() { return station_.GetRuntime(); }
    /// Starts the services that the deployment names no host for. A deployment.json that can't be used is
    /// reported; the show then runs with the defaults and looks nothing up.
    void StartServices();
    void ConnectViewer();
    void ConnectDesktop();
    void OnTrack(const player::TrackEvent& event);
    /// Tells the desktop's panels what is on the air. Called with the baton.
    void Announce();

    const std::filesystem::path appFolder_;
    sound::MixingEngine engine_{sound::MixingMode::RealTime};
    window::QtHost host_;
    FailureLog failureLog_{appFolder_};
    StationHost station_;
    window::QtLoop loop_{station_.GetRuntime()};
    std::unique_ptr<window::WindowView> view_;
    std::unique_ptr<output::Loudspeaker> loudspeaker_;
    std::unique_ptr<viewer::Viewer> viewer_;
    std::unique_ptr<desktop::Mpris> mpris_;
    desktop::NowPlaying nowPlaying_;  ///< for the baton's holder
};
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace sorakaze
