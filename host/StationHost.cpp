// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/StationHost.h"

#include <cassert>
#include <utility>

#include "gateway/MissingServices.h"
#include "host/SpeakableNames.h"
#include "player/MusicLibrary.h"
#include "player/bridge/PlayerScripts.h"
#include "show/LevelEvent.h"
#include "sound/MixingEngine.h"

namespace sorakaze {

StationHost::StationHost(Runtime::Options options, Host& host, std::stop_token interrupted)
    : onInterrupt_(interrupted, [engine = options.engine] { engine->Cancel(); }),
      player_(*options.engine,
              player::MusicLibrary::OfApplication(options.appFolder, std::move(interrupted))),
      runtime_(std::move(options), host) {
    player_.showSeed = [this] { return runtime_.ShowSeed(); };
    player_.speakable = [this](player::TrackText text) {
        return SpeakableNames(std::move(text), runtime_.ResourcesFolder());
    };
    RegisterPlayerScripts(runtime_.Scripts(), player_);
    player_.onTrack = [this](const player::TrackEvent& event) {
        if (window_) TellShow(event);
        if (onTrack) onTrack(event);
    };
    player_.OnChecked([this] { runtime_.Events().Post([this] { player_.TellChecked(); }); });
}

StationHost::~StationHost() {
    player_.OnChecked(nullptr);
    CloseWindow();
}

sorakaze::mainWindow& StationHost::mainWindow() {
    assert(window_ || runtime_.Threads().OnMainThread());
    if (!window_) {
        window_ = std::make_unique<sorakaze::mainWindow>();
        player_.songSeconds = [window = window_.get()] { return window->songDurationSlider.Value(); };
    }
    return *window_;
}

void StationHost::CloseWindow() {
    player_.onTrack = nullptr;
    player_.songSeconds = nullptr;
    window_.reset();
}

Deployment StationHost::ReadDeployment() const {
    return sorakaze::ReadDeployment(runtime_.ResourcesFolder() / "deployment.json");
}

std::string StationHost::StartServices(Deployment deployment) {
    hasOwnVoice_ = deployment.voiceHost.empty();
    runtime_.AnswerMessagesAfter(deployment.answerMessagesAfter);
    if (deployment.loudness) runtime_.Engine()->UseDesk(*deployment.loudness);
    std::string complaint;
    gateway_ = gateway::StartMissingServices(
        {runtime_.ResourcesFolder(), runtime_.TemporaryFolder(), deployment.encyclopaediaEnglish,
         deployment.encyclopaediaJapanese, deployment.contact},
        deployment.searchHost, deployment.voiceHost, complaint);
    mainWindow().deployment = std::move(deployment);
    return complaint;
}

void StationHost::TellShow(const player::TrackEvent& event) const {
    using What = player::TrackEvent::What;
    using Kind = ShowEvent::Kind;
    const auto tell = [this](Kind kind, ShowEvent::Fields fields) { window_->tell(kind, std::move(fields)); };
    switch (event.what) {
        case What::Started: {
            ShowEvent::Fields fields = {{"playlist", event.playlist},
                                        {"number", event.number},
                                        {"title", event.title},
                                        {"path", event.path.string()}};
            if (!event.part.IsWholeFile()) fields.emplace_back("start", event.part.begin / 75.0);
            tell(Kind::Track, std::move(fields));
            TellLevel(tell, event.path, event.level);
            break;
        }
        case What::FadeBegun:
            tell(Kind::Fade, {{"number", event.number}, {"position", event.position}});
            break;
        case What::Ended:
            tell(Kind::Ended, {{"number", event.number}, {"position", event.position}});
            break;
        case What::Failed:
            tell(Kind::Failed, {{"what", "track"}, {"path", event.path.string()}, {"why", event.why}});
            break;
        case What::Untagged:
            tell(Kind::Failed, {{"what", "tags"}, {"path", event.path.string()}, {"why", event.why}});
            break;
        case What::Skipped:
            break;
    }
}

}  // namespace sorakaze
