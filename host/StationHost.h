// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One station, put together for a host: the runtime, the player for the user's own music with its scripts,
// the show's window, the deployment and the services that the deployment names no host for. The desktop and
// the studio each own one; what the two do differently (sound output, messages, pages) is theirs. Main
// thread.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>

#include "app/runtime/Runtime.h"
#include "gateway/Gateway.h"
#include "player/LocalPlayer.h"
#include "show/mainWindow.h"

namespace sorakaze {

class StationHost {
  public:
    /// `options` names the station's folder and an engine. From when a stop is requested of `interrupted`, on
    /// any thread, nothing waits for a decoder or for the search for music.
    StationHost(Runtime::Options options, Host& host, std::stop_token interrupted = {});
    ~StationHost();
    StationHost(const StationHost&) = delete;
    StationHost& operator=(const StationHost&) = delete;

    Runtime& GetRuntime() { return runtime_; }
    player::LocalPlayer& Player() { return player_; }
    /// The one window, created at the first call, which is the main thread's. Its Event_Open is the caller's
    /// to call. Any thread later, with the baton.
    sorakaze::mainWindow& mainWindow();
    bool HasWindow() const { return window_ != nullptr; }

    /// Called with the baton for each event of a track, after the show was told of it. May be unset.
    std::function<void(const player::TrackEvent&)> onTrack;

    /// The station's deployment.json. Throws DeploymentError.
    Deployment ReadDeployment() const;
    /// Gives the engine its desk, starts the services that `deployment` names no host for, and gives the
    /// window the deployment that results: the caller does this before Event_Open. Returns a complaint for
    /// the user; empty if all is well.
    std::string StartServices(Deployment deployment);
    /// Whether the voice service is the one that StartServices started.
    bool HasOwnVoice() const { return hasOwnVoice_; }

    /// Ends the services, whatever they are doing.
    void StopServices() { gateway_.reset(); }
    /// Kills the show's threads and drops the window.
    void CloseWindow();

  private:
    void TellShow(const player::TrackEvent& event) const;

    std::stop_callback<std::function<void()>> onInterrupt_;
    player::LocalPlayer player_;  ///< starts to search for music before anything else is done
    Runtime runtime_;
    std::unique_ptr<gateway::Gateway> gateway_;
    bool hasOwnVoice_ = false;
    std::unique_ptr<sorakaze::mainWindow> window_;
};

}  // namespace sorakaze
