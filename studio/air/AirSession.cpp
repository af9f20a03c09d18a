// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/air/AirSession.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <cmath>
#include <exception>
#include <utility>

#include "base/ScopeExit.h"
#include "studio/Station.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

constexpr double kWatchPeriod = 0.25;  ///< seconds
/// A page may speak for so long after the end of a show.
constexpr double kLastWords = 120;
/// So that the ramps of the last sounds are heard.
constexpr double kTail = 0.2;
/// What a show has left behind, a lookup say, may take so long before it is ended.
constexpr double kPatience = 30;
/// Shows in which nothing is heard follow one another after pauses that grow up to this.
constexpr double kLongestPause = 60;

}  // namespace

AirSession::AirSession(const AirOptions& options, std::stop_token interrupted)
    : options_(options),
      folder_(FindStation(options.station)),
      station_({std::make_unique<WallClock>(), folder_, &engine_, options.seed}, host_,
               std::move(interrupted)),
      window_(station_.mainWindow()),
      speaker_(window_.voiceHTMLViewer, [this](const std::string& why) { TellSilentPage(why); }),
      transcript_(console_, folder_),
      failureLines_(console_, folder_),
      deadAir_(options.deadAir, [this] { return Seconds(); }) {
    assert(!options_.shows.empty());
    if (station_.GetRuntime().TemporaryFolder().empty()) {
        throw StudioError(kFailed,
                          "No temporary folder can be made: TMPDIR must name a folder that can be written.");
    }
    StartServices();
    if (!options_.log.empty()) {
        try {
            log_ = std::make_unique<onair::AsRunLog>(options_.log);
        } catch (const std::exception& error) {
            console_.Message(std::string(error.what()) + " The show goes on without a log.");
        }
    }
    window_.Event_Open();
    CheckShows();
    if (options_.songSeconds) window_.songDurationSlider.SetValue(*options_.songSeconds);
    if (!options_.quiet) progress_.observers.push_back(&transcript_);
    failureLines_.SetTranscript(!options_.quiet);
    progress_.observers.push_back(&failureLines_);
    progress_.observers.push_back(&summary_);
    progress_.observers.push_back(&deadAir_);
    if (log_) progress_.observers.push_back(log_.get());
    window_.observer = &progress_;
    station_.onTrack = [this](const player::TrackEvent& event) { summary_.OnTrack(event); };
    engine_.OnFailure([this] { station_.GetRuntime().Events().Post([this] { window_.tellFailures(); }); });
    watch_.RunEvent = [this] {
        for (;;) {
            const double next = Seconds() + kWatchPeriod;
            WaitWhile([this, next] { return Seconds() < next; });
            Watch();
        }
    };
}

AirSession::~AirSession() {
    watch_.Kill();
    outputs_.reset();
    engine_.RemoveTap(tap_);
    engine_.OnFailure(nullptr);
    station_.onTrack = nullptr;
    window_.observer = nullptr;
}

void AirSession::StartServices() {
    Deployment deployment;
    try {
        deployment = station_.ReadDeployment();
    } catch (const DeploymentError& error) {
        throw StudioError(kFailed, std::string("deployment.json: ") + error.what());
    }
    if (const auto advice = ContactAdvice(deployment); !advice.empty()) console_.Message(advice);
    const std::string complaint = station_.StartServices(std::move(deployment));
    if (!complaint.empty()) console_.Message(complaint);
    // Nobody is here who could answer: no message holds the show up.
    station_.GetRuntime().AnswerMessagesAfter(std::nullopt);
}

/// What is misspelt is told of now and not when its turn comes, in the middle of the night.
void AirSession::CheckShows() {
    for (const AirShow& show : options_.shows) {
        SelectRow(window_.programMenu, show.program, "program");
        SelectRow(window_.playlistMenu, show.playlist, "playlist");
    }
}

void AirSession::Interrupt() {
    station_.GetRuntime().Events().Post([this] {
        ending_ = true;
        StopShow();
    });
}

void AirSession::EndGracefully() {
    station_.GetRuntime().Events().Post([this] {
        ending_ = true;
        if (!IsOnAir(window_)) return StopShow();
        // The next look at the player finds that the show is over, and begins its ending.
        graceful_ = true;
        window_.mode = "songs 0";
        Note("end-asked", "The show is ended.");
    });
}

void AirSession::ReopenLog() {
    if (log_) log_->Reopen();
}

void AirSession::Run() {
    assert(station_.GetRuntime().Threads().OnMainThread());
    if (!AwaitStart()) return;
    outputs_ = std::make_unique<AirOutputs>(engine_, options_.targets);
    engine_.AddTap(tap_);
    watch_.Run();
    Note("on-air", {});
    std::size_t next = 0;
    int unheard = 0;
    while (!ending_) {
        const bool heard = RunShow(options_.shows[next]);
        unheard = heard ? 0 : unheard + 1;
        if (!std::exchange(restart_, false) && ++next == options_.shows.size()) {
            if (!options_.repeat) break;
            next = 0;
        }
        if (!ending_ && unheard > 0)
            PauseFor(std::min(kLongestPause, std::ldexp(0.5, std::min(unheard, 10))));
    }
    station_.GetRuntime().Events().DoEventsWhile([this, end = Seconds() + kTail] { return Seconds() < end; });
    watch_.Kill();
    TellNews();
    const auto complaints = outputs_->Finish();
    for (const std::string& complaint : complaints) Note("output", complaint);
    Note("off-air", {});
    if (!complaints.empty()) throw StudioError(kFailed, complaints.front());
    if (!verdict_.empty()) throw StudioError(kTracksFailed, verdict_);
}

bool AirSession::AwaitStart() {
    if (!options_.start) return true;
    const auto start = onair::NextTime(*options_.start, std::chrono::system_clock::now());
    console_.Line("On the air from " + onair::IsoTime(start) + ".");
    station_.GetRuntime().Events().DoEventsWhile(
        [this, start] { return !ending_ && std::chrono::system_clock::now() < start; });
    return !ending_;
}

bool AirSession::RunShow(const AirShow& show) {
    EventLoop& events = station_.GetRuntime().Events();
    AwaitThreads();
    if (ending_) return false;
    if (hooks_) AllowShows(window_, *std::exchange(hooks_, std::nullopt));
    SelectRow(window_.programMenu, show.program, "program");
    SelectRow(window_.playlistMenu, show.playlist, "playlist");
    summary_ = ShowSummary();
    const std::uint64_t before = tap_.Blocks();
    begun_ = false;
    deadAir_.Begin();
    events.Post([this] {
        begun_ = true;
        if (!hooks_) window_.programStart.Push();
    });
    events.DoEventsWhile([this] { return !begun_ || IsOnAir(window_); });
    deadAir_.End();
    const double lastWords = Seconds() + kLastWords;
    events.DoEventsWhile(
        [this, lastWords] { return !hooks_ && speaker_.IsSpeaking() && Seconds() < lastWords; });
    ReportShow();
    return tap_.Blocks() > before;
}

/// The preparation of a track goes on when a show has ended; the next show would find it running.
void AirSession::AwaitThreads() {
    const double end = Seconds() + kPatience;
    const auto running = [this] {
        return window_.getNextSong.State() == Thread::kRunning ||
               window_.commandExecThread.State() == Thread::kRunning;
    };
    station_.GetRuntime().Events().DoEventsWhile([&] { return running() && !ending_ && Seconds() < end; });
    if (!running()) return;
    window_.getNextSong.Kill();
    window_.commandExecThread.Kill();
}

void AirSession::PauseFor(double seconds) {
    station_.GetRuntime().Events().DoEventsWhile(
        [this, end = Seconds() + seconds] { return !ending_ && Seconds() < end; });
}

void AirSession::StopShow() {
    if (!hooks_) hooks_ = StopForGood(window_);
}

void AirSession::Watch() {
    window_.tellDucks();
    TellNews();
    WatchSilence();
    if (graceful_) FadeForEnding();
}

void AirSession::WatchSilence() {
    const bool sound = std::exchange(heardBlocks_, tap_.Blocks()) != tap_.Blocks();
    const double silence = deadAir_.Seconds();
    switch (deadAir_.Observe(sound)) {
        case DeadAir::Verdict::Nothing:
            break;
        case DeadAir::Verdict::Silent:
            Note("dead-air", "Dead air: nothing has been heard for " +
                                 std::to_string(static_cast<int>(deadAir_.Seconds())) +
                                 " seconds, and the program asks for no silence.");
            break;
        case DeadAir::Verdict::Over:
            Note("sound-again",
                 "There is sound again, after " + std::to_string(static_cast<int>(silence)) + " seconds.");
            break;
        case DeadAir::Verdict::Restart:
            Note("restart", "Dead air for " + std::to_string(static_cast<int>(deadAir_.Seconds())) +
                                " seconds: the show is started anew.");
            station_.GetRuntime().Events().Post([this] {
                restart_ = !graceful_;
                StopShow();
            });
            break;
    }
}

/// The track that plays, or one that a block has just started.
void AirSession::FadeForEnding() {
    player::LocalPlayer& player = station_.Player();
    if (!IsOnAir(window_) || window_.commandExecThread.State() == Thread::kRunning) return;
    if (player.State() != "playing") return;
    player.BeginFade();
    WaitWhile([&player] { return player.IsFading(); });
    player.EndFade();
}

void AirSession::TellNews() {
    for (const std::string& news : outputs_->TakeNews()) Note("output", news);
    if (!log_) return;
    if (const std::string news = log_->TakeNews(); !news.empty()) console_.Message(news);
}

void AirSession::ReportShow() {
    if (!options_.quiet) {
        console_.Line(summary_.Text());
        if (!summary_.Credits().empty()) console_.Line("Credits:");
        for (const std::string& credit : summary_.Credits()) console_.Line("  " + credit);
    } else if (summary_.HasFailures()) {
        console_.Message(summary_.Text());
    }
    verdict_ = summary_.Verdict();
}

void AirSession::Note(std::string_view what, const std::string& text) {
    if (!text.empty()) console_.Message(text);
    if (log_)
        log_->Note(what, text.empty() ? ShowEvent::Fields{} : ShowEvent::Fields{{"text", String(text)}});
}

void AirSession::TellSilentPage(const std::string& why) {
    if (window_.observer)
        window_.tell(ShowEvent::Kind::Failed, {{"what", "sayj"}, {"path", ""}, {"why", why}});
    else  // after the show
        console_.Message("sayj: " + why);
}

}  // namespace sorakaze::studio
