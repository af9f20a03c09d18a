// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Desktop.h"

#include <QCoreApplication>
#include <QIcon>
#include <cstdio>
#include <utility>

#include "host/StationPaths.h"
#include "show/ShowState.h"
#include "speech/VoicePage.h"

namespace sorakaze {
Desktop::Desktop(std::filesystem::path appFolder, std::stop_token interrupted)
    : appFolder_(std::move(appFolder)),
      station_({std::make_unique<WallClock>(), appFolder_, &engine_, std::nullopt}, host_,
               std::move(interrupted)) {}

Desktop::~Desktop() {
    engine_.OnFailure(nullptr);
    // First silence, then everything that could still make a sound or ask a question.
    loudspeaker_.reset();
    if (station_.HasWindow()) station_.mainWindow().voiceHTMLViewer.Load = nullptr;
    viewer_.reset();
    station_.StopServices();
    host_.Close();
    mpris_.reset();
    view_.reset();
    station_.onTrack = nullptr;
    station_.CloseWindow();
}

void Desktop::_Main() {
    try {
        _Startup();
        _RuntimeRun();
    } catch (...) {
        _UnhandledException(std::current_exception());
    }
}

void Desktop::_Startup() {
    _InitFileTypes();
    _NewAppInstance();
    _ApplicationAddMenuHandlers();
    _MakeDefaultView();
}

/// There are no file types.
void Desktop::_InitFileTypes() {}

/// `App` has no state: it exists before anything starts.
void Desktop::_NewAppInstance() {}

/// There are no menus.
void Desktop::_ApplicationAddMenuHandlers() {}

void Desktop::_MakeDefaultView() {
    mainWindow& window = station_.mainWindow();
    view_ = std::make_unique<window::WindowView>(window, Runtime());
    host_.SetParent(view_.get());
    view_->onClose = [this] { Quit(); };
    ConnectViewer();
    StartServices();
    try {
        window.Event_Open();
    } catch (...) {
        Runtime().ReportUncaught(std::current_exception());
    }
    engine_.OnFailure([this] { Runtime().Events().Post([this] { station_.mainWindow().tellFailures(); }); });
    window.observer = &failureLog_;
    view_->show();
    ConnectDesktop();
    loudspeaker_ = std::make_unique<output::Loudspeaker>(engine_);
}

void Desktop::_RuntimeRun() {
    loop_.Run();
}

void Desktop::_UnhandledException(std::exception_ptr exception) {
    Runtime().ReportUncaught(std::move(exception));
}

void Desktop::StartServices() {
    Deployment deployment;
    std::string complaint;
    try {
        deployment = station_.ReadDeployment();
    } catch (const DeploymentError& error) {
        complaint = std::string("deployment.json: ") + error.what();
        // It may have meant to look nothing up.
        deployment.encyclopaediaEnglish.clear();
        deployment.encyclopaediaJapanese.clear();
    }
    if (const auto advice = ContactAdvice(deployment); !advice.empty())
        std::fprintf(stderr, "%s\n", advice.c_str());
    const std::string failure = station_.StartServices(std::move(deployment));
    if (!failure.empty()) complaint = failure;
    if (complaint.empty()) return;
    Runtime().Events().Post([this, complaint] { Runtime().ShowMessage(complaint); });
}

void Desktop::ConnectViewer() {
    viewer_ = std::make_unique<viewer::Viewer>(ProgramOfStation(appFolder_, "sorakaze-viewer"));
    viewer_->OnAudible([this](bool audible) { engine_.SetOutsideSpeech(audible); });
    viewer_->OnFailure([this](const std::string& why) {
        Runtime().Events().Post([this, why] {
            station_.mainWindow().tell(ShowEvent::Kind::Failed,
                                       {{"what", "sayj"}, {"path", ""}, {"why", why}});
        });
    });
    station_.mainWindow().voiceHTMLViewer.Load = [this](const FolderItemRef& file) {
        const Deployment& deployment = station_.mainWindow().deployment;
        viewer_->Load(file->Path(), {VoiceAddress(deployment), kVoicePageScript, station_.HasOwnVoice()});
    };
}

void Desktop::ConnectDesktop() {
    const auto press = [this] {
        Runtime().Events().Post([this] { station_.mainWindow().programStart.Push(); });
    };
    mpris_ =
        std::make_unique<desktop::Mpris>(desktop::Commands{press, [this] { Raise(); }, [this] { Quit(); }});
    station_.onTrack = [this](const player::TrackEvent& event) { OnTrack(event); };
    PushButton& button = station_.mainWindow().programStart;
    button.Changed = [this, show = button.Changed] {
        show();
        Announce();
    };
}

void Desktop::OnTrack(const player::TrackEvent& event) {
    if (event.what == player::TrackEvent::What::Started) {
        const player::TrackText text = station_.Player().ShownText(event.playlist, event.number);
        nowPlaying_.number = event.number;
        nowPlaying_.title = window::ToQt(event.title);
        nowPlaying_.artist = window::ToQt(text.artist);
        nowPlaying_.album = window::ToQt(text.album);
        nowPlaying_.path = window::ToQt(event.path.string());
    } else if (event.what == player::TrackEvent::What::Ended) {
        nowPlaying_ = {};
    }
    Announce();
}

void Desktop::Announce() {
    nowPlaying_.onAir = IsOnAir(station_.mainWindow());
    nowPlaying_.station = window::ToQt(station_.mainWindow().station);
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
    Runtime().Events().Quit();
    host_.Close();
    if (onQuit) std::exchange(onQuit, nullptr)();
    QCoreApplication::quit();
}

}  // namespace sorakaze
