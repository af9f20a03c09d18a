// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/RenderSession.h"

#include <cassert>
#include <cstdio>
#include <utility>

#include "show/ShowState.h"
#include "sound/Measurement.h"
#include "studio/Rehearsal.h"
#include "studio/Station.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

/// The ramps of the last sounds are this long.
constexpr TickCount kTailTicks = 2;
/// A page may speak for so long after the end of a show.
constexpr TickCount kLastWordsTicks = 120 * kTicksPerSecond;
/// A show without a limit is over when no track has started for so long...
constexpr std::int32_t kIdleTicks = 20 * 60 * kTicksPerSecond;
/// ...or when it has run for so long.
constexpr double kLongestSeconds = 24 * 60 * 60;

/// "-16.1 LUFS, true peak -1.2 dBTP, range 5.3 LU".
std::string LevelsText(const sound::OutputLevels& levels) {
    if (levels.loudness <= sound::kSilentLoudness) return "silence";
    char text[100];
    std::snprintf(text, sizeof text, "%.1f LUFS, true peak %.1f dBTP, range %.1f LU", double{levels.loudness},
                  double{levels.truePeak}, double{levels.range});
    return text;
}

}  // namespace

RenderSession::RenderSession(const RenderOptions& options, std::stop_token interrupted)
    : options_(options),
      folder_(FindStation(options.station)),
      recorder_(options.rehearsal ? sound::MixingMode::Counting : sound::MixingMode::Offline),
      station_({std::make_unique<StudioClock>([this] { recorder_.MixTick(); }), folder_, &recorder_.Engine(),
                options.seed},
               host_, std::move(interrupted)),
      window_(station_.mainWindow()),
      speaker_(window_.voiceHTMLViewer, [this](const std::string& why) { TellSilentPage(why); }),
      transcript_(console_, folder_),
      failureLines_(console_, folder_) {
    if (station_.GetRuntime().TemporaryFolder().empty()) {
        throw StudioError(kFailed,
                          "No temporary folder can be made: TMPDIR must name a folder that can be written.");
    }
    station_.GetRuntime().SetCommandCache(options_.rehearsal ? &options_.rehearsal->Commands() : &speech_);
    StartServices();
    recorder_.Begin(options_.output, options_.quiet ? Metering::Off : Metering::On);
    station_.Player().SetReadAhead(true);
    window_.Event_Open();
    ChooseShow();
    ObserveShow();
    limit_.RunEvent = [this] {
        const double limit = options_.limitSeconds.value_or(kLongestSeconds) * kTicksPerSecond;
        WaitWhile([limit] { return Ticks() < limit; });
        Interrupt();
    };
}

void RenderSession::ObserveShow() {
    if (!options_.quiet) progress_.observers.push_back(&transcript_);
    if (!options_.trace.empty()) {
        trace_ = std::make_unique<TraceWriter>(options_.trace);
        progress_.observers.push_back(trace_.get());
    }
    failureLines_.SetTranscript(!options_.quiet);
    if (options_.rehearsal)
        progress_.observers.push_back(options_.rehearsal);
    else
        progress_.observers.push_back(&failureLines_);
    progress_.observers.push_back(&summary_);
    window_.observer = &progress_;
    station_.onTrack = [this](const player::TrackEvent& event) { summary_.OnTrack(event); };
}

void RenderSession::TellSilentPage(const std::string& why) {
    if (window_.observer)
        window_.tell(ShowEvent::Kind::Failed, {{"what", "sayj"}, {"path", ""}, {"why", why}});
    else  // after the show
        console_.Message("sayj: " + why);
}

RenderSession::~RenderSession() {
    station_.onTrack = nullptr;
    window_.observer = nullptr;
}

/// Offline nothing may depend on what a network does: only our own services are used.
void RenderSession::StartServices() {
    Deployment deployment;
    try {
        deployment = station_.ReadDeployment();
    } catch (const DeploymentError& error) {
        throw StudioError(kFailed, std::string("deployment.json: ") + error.what());
    }
    if (options_.offline) {
        for (std::string* place : {&deployment.searchHost, &deployment.voiceHost,
                                   &deployment.encyclopaediaEnglish, &deployment.encyclopaediaJapanese}) {
            place->clear();
        }
    }
    if (const auto advice = ContactAdvice(deployment); !advice.empty()) console_.Message(advice);
    const std::string complaint = station_.StartServices(std::move(deployment));
    if (!complaint.empty()) console_.Message(complaint);
}

void RenderSession::ChooseShow() {
    SelectRow(window_.programMenu, options_.program, "program");
    SelectRow(window_.playlistMenu, options_.playlist, "playlist");
    if (options_.songSeconds) window_.songDurationSlider.SetValue(*options_.songSeconds);
}

void RenderSession::Interrupt() {
    station_.GetRuntime().Events().Post([this] { Stop(); });
}

void RenderSession::Run() {
    assert(station_.GetRuntime().Threads().OnMainThread());
    EventLoop& events = station_.GetRuntime().Events();
    events.Post([this] { Begin(); });
    limit_.Run();
    events.DoEventsWhile([this] { return !IsOver(); });
    const bool onAir = IsOnAir(window_);
    const bool standstill = !stopped_ && onAir && recorder_.Error().empty();
    const bool ended = begun_ && !stopped_ && !onAir;
    Stop();
    MixRest(ended);
    console_.EndProgress();
    if (!fault_.empty()) throw StudioError(kWrongCall, fault_);
    if (!begun_) throw StudioError(kFailed, "Interrupted before the show began.");
    if (standstill && !progress_.AnythingHeard()) {
        // There is no file.
        ReportShow();
        throw StudioError(kFailed, "The show came to a standstill before anything was heard.");
    }
    recorder_.Finish();
    if (options_.rehearsal) options_.rehearsal->TakeSilences(recorder_.Silences());
    ReportShow();
    if (const auto levels = recorder_.Levels(); levels) console_.Line(LevelsText(*levels));
    if (standstill) {
        throw StudioError(kFailed,
                          "The show came to a standstill: the program plays no track any more. The sound up "
                          "to there is in the file.");
    }
    if (const auto verdict = summary_.Verdict(); !verdict.empty()) throw StudioError(kTracksFailed, verdict);
}

void RenderSession::ReportShow() {
    if (!options_.quiet) {
        console_.Line(summary_.Text());
        if (!summary_.Credits().empty()) console_.Line("Credits:");
        for (const std::string& credit : summary_.Credits()) console_.Line("  " + credit);
    } else if (summary_.HasFailures() && !options_.rehearsal) {
        console_.Message(summary_.Text());
    }
    if (trace_) trace_->Finish();
}

void RenderSession::MixRest(bool pageMayFinish) {
    Clock& clock = station_.GetRuntime().GetClock();
    for (TickCount tick = 0; pageMayFinish && speaker_.IsSpeaking() && tick < kLastWordsTicks; ++tick)
        clock.Advance();
    for (TickCount tick = 0; tick < kTailTicks; ++tick) clock.Advance();
}

void RenderSession::Begin() {
    if (stopped_) return;
    begun_ = true;
    window_.programStart.Push();
    if (LengthOf(window_.mode).unit == ShowLength::Unit::Endless && !options_.limitSeconds) {
        fault_ = "The program \"" + options_.program +
                 "\" names no end (mode: songs N, minites N or all): give --limit SECONDS.";
        Stop();
    }
}

/// Called once a tick, between events.
bool RenderSession::IsOver() {
    if (!begun_) return stopped_;
    if (stopped_ || !IsOnAir(window_) || !recorder_.Error().empty()) return true;
    station_.Player().State();  // so that a track's end is told at its own tick
    window_.tellFailures();
    window_.tellDucks();
    if (!options_.rehearsal)
        console_.Progress(progress_.Done(window_, station_.Player(), options_.limitSeconds),
                          Ticks() / static_cast<double>(kTicksPerSecond));
    const bool idle = !options_.limitSeconds && Ticks() - progress_.LastTrackStart() > kIdleTicks;
    return idle || (IsStalled(window_) && recorder_.IsSilent());
}

void RenderSession::Stop() {
    if (stopped_) return;
    stopped_ = true;
    StopForGood(window_);
}

}  // namespace sorakaze::studio
