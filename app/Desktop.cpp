// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Desktop.h"

#include <QCoreApplication>
#include <QIcon>
#include <utility>

#include "player/MusicLibrary.h"
#include "player/bridge/PlayerScripts.h"
#include "speech/VoicePage.h"

namespace sorakaze {
// The library begins to look through the music before anything else comes up.
Desktop::Desktop(std::filesystem::path appFolder, std::stop_token interrupted)
    : appFolder_(std::move(appFolder)),
      onInterrupt_(interrupted, [this] { engine_.Cancel(); }),
      player_(engine_, player::MusicLibrary::OfApplication(appFolder_, std::move(interrupted))),
      runtime_({std::make_unique<WallClock>(), appFolder_, &engine_, std::nullopt}, host_) {}

Desktop::~Desktop() {
    engine_.OnFailure(nullptr);
    // First silence, then everything that could still make a sound or ask a question.
    loudspeaker_.reset();
    if (window_) window_->voiceHTMLViewer.Load = nullptr;
    viewer_.reset();
    gateway_.reset();
    host_.Close();
    mpris_.reset();
    view_.reset();
    player_.onTrack = nullptr;
    window_.reset();
}

// NOLINTBEGIN(bugprone-reserved-identifier)
void Desktop::_Main() {
    try {
        _Startup();
        _RuntimeRun();
    } catch (...) {
        _UnhandledException(std::current_exception());
    }
}

/// There are no file types and no menus: the window is all there is.
void Desktop::_Startup() {
    _MakeDefaultView();
}

void Desktop::_MakeDefaultView() {
    window_ = std::make_unique<mainWindow>();
    RegisterPlayerScripts(runtime_.Scripts(), player_, *window_);
    view_ = std::make_unique<window::WindowView>(*window_, runtime_);
    host_.SetParent(view_.get());
    view_->onClose = [this] { Quit(); };
    viewer_ = std::make_unique<viewer::Viewer>(appFolder_ / "Sorakaze.app/Contents/Linux/sorakaze-viewer");
    window_->voiceHTMLViewer.Load = [this](const FolderItemRef& file) {
        viewer_->Load(file->Path(), {VoiceAddress(window_->deployment), kVoicePageScript, ownVoice_});
    };
    try {
        window_->Event_Open();
    } catch (...) {
        runtime_.TellUncaught(std::current_exception());
    }
    engine_.OnFailure([this] { runtime_.Events().Post([this] { window_->tellFailures(); }); });
    window_->observer = &failureLog_;
    view_->show();
    WatchTheShow();
    loudspeaker_ = std::make_unique<output::Loudspeaker>(engine_);
    OfferServices();
}

void Desktop::_RuntimeRun() {
    loop_.Run();
}

void Desktop::_UnhandledException(std::exception_ptr exception) {
    runtime_.TellUncaught(std::move(exception));
}
// NOLINTEND(bugprone-reserved-identifier)

void Desktop::OfferServices() {
    Deployment& deployment = window_->deployment;
    std::string complaint;
    try {
        deployment = ReadDeployment(runtime_.ResourcesFolder() / "deployment.json");
    } catch (const DeploymentError& error) {
        complaint = std::string("deployment.json: ") + error.what();
        // It may have meant to look nothing up.
        deployment.encyclopaediaEnglish.clear();
        deployment.encyclopaediaJapanese.clear();
    }
    ownVoice_ = deployment.voiceHost.empty();
    gateway_ = gateway::StandIn({runtime_.ResourcesFolder(), runtime_.TemporaryFolder(),
                                 deployment.encyclopaediaEnglish, deployment.encyclopaediaJapanese},
                                deployment.searchHost, deployment.voiceHost, complaint);
    if (complaint.empty()) return;
    runtime_.Events().Post([this, complaint] { runtime_.ShowMessage(complaint); });
}

void Desktop::WatchTheShow() {
    mpris_ = std::make_unique<desktop::Mpris>(
        desktop::Commands{[this] { runtime_.Events().Post([this] { window_->programStart.Push(); }); },
                          [this] { Raise(); }, [this] { Quit(); }});
    player_.onTrack = [this, tell = player_.onTrack](const player::TrackEvent& event) {
        tell(event);
        OnTrack(event);
    };
    window_->programStart.Changed = [this, show = window_->programStart.Changed] {
        show();
        Announce();
    };
}

void Desktop::OnTrack(const player::TrackEvent& event) {
    if (event.what == player::TrackEvent::What::Started) {
        const String record = player_.SongInfo(event.playlist, event.number);
        nowPlaying_.number = event.number;
        nowPlaying_.title = window::ToQt(event.title);
        nowPlaying_.artist = window::ToQt(NthField(record, Chr(9), 2));
        nowPlaying_.album = window::ToQt(NthField(record, Chr(9), 3));
        nowPlaying_.path = window::ToQt(event.path.string());
    } else if (event.what == player::TrackEvent::What::Ended) {
        nowPlaying_ = {};
    }
    Announce();
}

void Desktop::Announce() {
    nowPlaying_.onAir = !(window_->programStart.Caption() == kStartCaption);
    nowPlaying_.station = window::ToQt(window_->station);
    QMetaObject::invokeMethod(
        view_.get(),
        [this, now = nowPlaying_] {
            if (mpris_) mpris_->Update(now);
        },
        Qt::QueuedConnection);
}

void Desktop::Raise() {
    if (view_) view_->Raise();
}

void Desktop::Quit() {
    engine_.Cancel();
    if (view_) view_->hide();
    runtime_.Events().Quit();
    host_.Close();
    if (onQuit) std::exchange(onQuit, nullptr)();
    QCoreApplication::quit();
}

}  // namespace sorakaze
