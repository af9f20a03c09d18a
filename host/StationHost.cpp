// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/StationHost.h"

#include <cassert>
#include <utility>

#include "gateway/MissingServices.h"
#include "player/MusicLibrary.h"
#include "player/bridge/PlayerScripts.h"
#include "sound/MixingEngine.h"

namespace sorakaze {

StationHost::StationHost(Runtime::Options options, Host& host, std::stop_token interrupted)
    : onInterrupt_(interrupted, [engine = options.engine] { engine->Cancel(); }),
      player_(*options.engine,
              player::MusicLibrary::OfApplication(options.appFolder, std::move(interrupted))),
      runtime_(std::move(options), host) {
    RegisterPlayerScripts(runtime_.Scripts(), player_);
    player_.onTrack = [this](const player::TrackEvent& event) {
        if (window_) TellShow(event);
        if (onTrack) onTrack(event);
    };
}

StationHost::~StationHost() {
    CloseWindow();
}

sorakaze::mainWindow& StationHost::mainWindow() {
    assert(window_ || runtime_.Threads().OnMainThread());
    if (!window_) window_ = std::make_unique<sorakaze::mainWindow>();
    return *window_;
}

void StationHost::CloseWindow() {
    player_.onTrack = nullptr;
    window_.reset();
}

Deployment StationHost::ReadDeployment() const {
    return sorakaze::ReadDeployment(runtime_.ResourcesFolder() / "deployment.json");
}

std::string StationHost::StartServices(Deployment deployment) {
    hasOwnVoice_ = deployment.voiceHost.empty();
    std::string complaint;
    gateway_ =
        gateway::StartMissingServices({runtime_.ResourcesFolder(), runtime_.TemporaryFolder(),
                                       deployment.encyclopaediaEnglish, deployment.encyclopaediaJapanese},
                                      deployment.searchHost, deployment.voiceHost, complaint);
    mainWindow().deployment = std::move(deployment);
    return complaint;
}

void StationHost::TellShow(const player::TrackEvent& event) const {
    using What = player::TrackEvent::What;
    using Kind = ShowEvent::Kind;
    switch (event.what) {
        case What::Started:
            window_->tell(Kind::Track, {{"playlist", event.playlist},
                                        {"number", event.number},
                                        {"title", event.title},
                                        {"path", event.path.string()}});
            break;
        case What::FadeBegun:
            window_->tell(Kind::Fade, {{"number", event.number}, {"position", event.position}});
            break;
        case What::Ended:
            window_->tell(Kind::Ended, {{"number", event.number}, {"position", event.position}});
            break;
    }
}

}  // namespace sorakaze
