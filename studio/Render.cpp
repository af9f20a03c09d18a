// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Render.h"

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "app/runtime/Application.h"
#include "app/runtime/Signals.h"
#include "gateway/StandIn.h"
#include "player/LocalPlayer.h"
#include "player/MusicLibrary.h"
#include "player/bridge/PlayerScripts.h"
#include "show/mainWindow.h"
#include "sound/encoding/SoundFileWriter.h"
#include "studio/Console.h"
#include "studio/PageSpeaker.h"
#include "studio/Station.h"
#include "studio/StudioError.h"
#include "studio/TraceWriter.h"
#include "studio/Transcript.h"

namespace sorakaze::studio {
namespace {

constexpr std::size_t kFramesPerTick = sound::kSampleRate / kTicksPerSecond;
constexpr std::size_t kSamplesPerTick = kFramesPerTick * sound::kChannels;
/// A writer is given this many ticks of sound at once.
constexpr std::size_t kTicksPerBlock = 16;
/// How long the ramps of the last sounds go on behind the end of a show.
constexpr TickCount kTailTicks = 2;
/// How long a page may go on speaking behind the end of a show.
constexpr TickCount kLastWordsTicks = 120 * kTicksPerSecond;
/// A show for which no limit was given is over when for this long no track has begun...
constexpr std::int32_t kIdleTicks = 20 * 60 * kTicksPerSecond;
/// ...or when it has run for this long.
constexpr double kLongestSeconds = 24 * 60 * 60;

/// Messages are a line each, and answered by having been printed.
class StudioHost : public Host {
  public:
    explicit StudioHost(Console& console) : console_(console) {}
    void ShowMessage(const String& text, std::stop_token) override { console_.Message(text.Bytes()); }

  private:
    Console& console_;
};

/// What becomes of the sound of each tick. A writer's error ends the show at the next look, not within the
/// clock.
class Recorder {
  public:
    explicit Recorder(const std::filesystem::path& file) {
        if (!file.empty()) writer_ = sound::SoundFileWriter::Create(file);
        block_.reserve(kTicksPerBlock * kSamplesPerTick);
    }

    sound::MixingEngine& Engine() { return engine_; }
    const std::string& Error() const { return error_; }
    bool IsSilent() const { return engine_.Sounding() == 0; }

    void MixTick() {
        block_.resize(block_.size() + kSamplesPerTick);
        engine_.Mix(std::span(block_).last(kSamplesPerTick));
        if (block_.size() >= kTicksPerBlock * kSamplesPerTick) Write();
    }

    void Finish() {
        Write();
        if (!error_.empty()) throw StudioError(kFailed, error_);
        if (writer_) writer_->Finish();
    }

  private:
    void Write() {
        std::span<const float> sound(block_);
        // The limiter holds the first frames back: the file begins with the show, not with its delay.
        const auto skipped = std::min<std::size_t>(sound.size(), toSkip_);
        toSkip_ -= skipped;
        sound = sound.subspan(skipped);
        try {
            if (writer_ && error_.empty() && !sound.empty()) writer_->Write(sound);
        } catch (const std::exception& error) {
            error_ = error.what();
        }
        block_.clear();
    }

    sound::MixingEngine engine_{sound::Reading::Offline};
    std::unique_ptr<sound::SoundFileWriter> writer_;
    std::vector<float> block_;
    std::size_t toSkip_ = static_cast<std::size_t>(engine_.Latency().count) * sound::kChannels;
    std::string error_;
};

/// Passes events on to all that look on, and notes what the progress needs.
class Onlookers : public ShowObserver {
  public:
    std::vector<ShowObserver*> all;
    std::int32_t lastTrackBegan = 0;
    std::int32_t tracksBegun = 0;
    bool anythingHeard = false;

    void OnShowEvent(const ShowEvent& event) override {
        anythingHeard =
            anythingHeard || event.what == "track" || event.what.starts_with("say") || event.what == "sound";
        if (event.what == "track") {
            lastTrackBegan = event.ticks;
            ++tracksBegun;
        }
        for (ShowObserver* observer : all) observer->OnShowEvent(event);
    }
};

/// One show, from the press of the button to the complete file.
class Session {
  public:
    Session(const RenderOptions& options, std::stop_token interrupted)
        : options_(options),
          station_(FindStation(options.station)),
          host_(console_),
          recorder_(options.output),
          onInterrupt_(interrupted, [this] { recorder_.Engine().Cancel(); }),
          runtime_({std::make_unique<StudioClock>([this] { recorder_.MixTick(); }), station_,
                    &recorder_.Engine(), options.seed},
                   host_),
          player_(recorder_.Engine(), player::MusicLibrary::OfApplication(station_, std::move(interrupted))),
          transcript_(console_, station_) {
        if (runtime_.TemporaryFolder().empty()) {
            throw StudioError(
                kFailed, "No temporary folder can be made: TMPDIR must name a folder that can be written.");
        }
        OfferServices();
        player_.SetReadAhead(true);
        RegisterPlayerScripts(runtime_.Scripts(), player_, window_);
        window_.Event_Open();
        SelectRow(window_.programMenu, options.program, "program");
        SelectRow(window_.playlistMenu, options.playlist, "playlist");
        if (options.songSeconds) window_.songDurationSlider.SetValue(*options.songSeconds);
        if (!options.quiet) onlookers_.all.push_back(&transcript_);
        if (!options.trace.empty()) {
            trace_ = std::make_unique<TraceWriter>(options.trace);
            onlookers_.all.push_back(trace_.get());
        }
        window_.observer = &onlookers_;
        limit_.RunEvent = [this] {
            const double limit = options_.limitSeconds.value_or(kLongestSeconds) * kTicksPerSecond;
            WaitWhile([limit] { return Ticks() < limit; });
            runtime_.Events().Post([this] { Stop(); });
        };
    }

    ~Session() { window_.observer = nullptr; }

    std::filesystem::path FolderOfTheRun() { return runtime_.FolderOfTheRun(); }

    /// Any thread: ends the show through its stop path.
    void Interrupt() {
        runtime_.Events().Post([this] { Stop(); });
    }

    void Run() {
        runtime_.Events().Post([this] { Begin(); });
        limit_.Run();
        runtime_.Events().DoEventsWhile([this] { return !IsOver(); });
        const bool standstill = !stopped_ && OnAir() && recorder_.Error().empty();
        const bool ended = begun_ && !stopped_ && !OnAir();
        Stop();
        // A sentence out of a page is no part of the show's end: it is heard to its own.
        for (TickCount tick = 0; ended && speaker_.IsSpeaking() && tick < kLastWordsTicks; ++tick) {
            runtime_.GetClock().Advance();
        }
        for (TickCount tick = 0; tick < kTailTicks; ++tick) runtime_.GetClock().Advance();
        console_.EndProgress();
        if (!fault_.empty()) throw StudioError(kWrongCall, fault_);
        if (!begun_) throw StudioError(kFailed, "Interrupted before the show began.");
        if (standstill && !onlookers_.anythingHeard)
            throw StudioError(kFailed, "The show came to a standstill before anything was heard.");
        recorder_.Finish();
        if (trace_) trace_->Finish();
        if (standstill) {
            throw StudioError(
                kFailed,
                "The show came to a standstill: the program plays no track any more. The sound up to there "
                "is in the file.");
        }
    }

  private:
    bool OnAir() const { return !(window_.programStart.Caption() == kStartCaption); }

    /// Our own where the deployment names no others. Off line nothing depends on what a network does.
    void OfferServices() {
        Deployment& deployment = window_.deployment;
        try {
            deployment = ReadDeployment(runtime_.ResourcesFolder() / "deployment.json");
        } catch (const DeploymentError& error) {
            throw StudioError(kFailed, std::string("deployment.json: ") + error.what());
        }
        if (options_.offline) {
            for (std::string* place : {&deployment.searchHost, &deployment.voiceHost,
                                       &deployment.encyclopaediaEnglish, &deployment.encyclopaediaJapanese}) {
                place->clear();
            }
        }
        std::string complaint;
        gateway_ = gateway::StandIn({runtime_.ResourcesFolder(), runtime_.TemporaryFolder(),
                                     deployment.encyclopaediaEnglish, deployment.encyclopaediaJapanese},
                                    deployment.searchHost, deployment.voiceHost, complaint);
        if (!complaint.empty()) console_.Message(complaint);
    }

    void Begin() {
        if (stopped_) return;
        begun_ = true;
        window_.programStart.Push();
        const String word = NthField(window_.mode, " ", 1);
        const bool ends = word == "songs" || word == "minites" || word == "all";
        if (!ends && !options_.limitSeconds) {
            fault_ = "The program \"" + options_.program +
                     "\" names no end (mode: songs N, minites N or all): give --limit SECONDS.";
            Stop();
        }
    }

    /// Looked at once a tick, between events.
    bool IsOver() {
        if (!begun_) return stopped_;
        if (stopped_ || !OnAir() || !recorder_.Error().empty()) return true;
        player_.State();  // so that a track's end is told at its own tick
        window_.tellFailures();
        console_.Progress(Done(), Ticks() / static_cast<double>(kTicksPerSecond));
        const bool idle = !options_.limitSeconds && Ticks() - onlookers_.lastTrackBegan > kIdleTicks;
        return idle || IsStalled();
    }

    /// Nothing is left that could go on with the show, and nothing is heard.
    bool IsStalled() const {
        return window_.mainTimer.Mode() == Timer::kOff &&
               window_.commandExecThread.State() != Thread::kRunning &&
               window_.getNextSong.State() != Thread::kRunning && recorder_.IsSilent();
    }

    std::optional<double> Done();

    void Stop() {
        if (stopped_) return;
        stopped_ = true;
        if (OnAir()) window_.programStart.Push();
        // A stop within the wait for a block would let the show go on behind it.
        window_.observer = nullptr;
        window_.programStart.Action = nullptr;
        window_.commandExecThread.RunEvent = nullptr;
    }

    const RenderOptions& options_;
    const std::filesystem::path station_;
    Console console_;
    StudioHost host_;
    Recorder recorder_;
    std::stop_callback<std::function<void()>> onInterrupt_;  ///< nobody waits for a decoder any more
    Runtime runtime_;
    std::unique_ptr<gateway::Gateway> gateway_;
    player::LocalPlayer player_;
    mainWindow window_;
    PageSpeaker speaker_{window_.voiceHTMLViewer,
                         [this](const std::string& line) { console_.Message(line); }};
    Transcript transcript_;
    std::unique_ptr<TraceWriter> trace_;
    Onlookers onlookers_;
    Thread limit_;
    bool begun_ = false;
    bool stopped_ = false;
    std::string fault_;
};

/// The part of the show that is over, where its mode or limit gives it a length.
std::optional<double> Session::Done() {
    const double seconds = Ticks() / static_cast<double>(kTicksPerSecond);
    std::optional<double> done;
    const String word = NthField(window_.mode, " ", 1);
    const double number = Val(NthField(window_.mode, " ", 2));
    if (word == "minites" && number > 0) {
        done = seconds / (number * 60);
    } else if (word == "songs" || word == "all") {
        const double tracks =
            word == "all" ? Val(player_.CountSongs(window_.playlistMenu.Text().Bytes())) : number;
        if (tracks > 0) {
            const double part = std::min(Val(player_.Position()) / window_.songDurationSlider.Value(), 1.0);
            done = (std::max(onlookers_.tracksBegun - 1, 0) + part) / tracks;
        }
    }
    if (options_.limitSeconds) done = std::max(done.value_or(0), seconds / *options_.limitSeconds);
    return done;
}

/// What a process that ends at once would leave behind.
void RemoveLeftovers(const std::filesystem::path& output, const std::filesystem::path& temporary) {
    std::error_code ignored;
    if (!temporary.empty()) std::filesystem::remove_all(temporary, ignored);
    if (!output.empty())
        sound::SoundFileWriter::RemoveUnfinished(std::filesystem::absolute(output).parent_path());
}

}  // namespace

void Render(const RenderOptions& options) {
    Session* running = nullptr;
    std::filesystem::path temporary;
    std::mutex mutex;  // guards these: a signal may come before the session stands and after it has gone
    bool interrupted = false;
    std::stop_source music;  // a look through a huge music folder ends too
    const Signals signals(
        [&] {
            const std::lock_guard lock(mutex);
            interrupted = true;
            music.request_stop();
            if (running) running->Interrupt();
        },
        [&] {
            const std::lock_guard lock(mutex);
            RemoveLeftovers(options.output, temporary);
        });
    Session session(options, music.get_token());
    {
        const std::lock_guard lock(mutex);
        running = &session;
        temporary = session.FolderOfTheRun();
        if (interrupted) session.Interrupt();
    }
    const auto forget = [&](void*) {
        const std::lock_guard lock(mutex);
        running = nullptr;
    };
    const std::unique_ptr<void, decltype(forget)> guard(&session, forget);
    session.Run();
}

void List(const std::filesystem::path& given) {
    const auto station = FindStation(given);
    Console console;
    StudioHost host(console);
    sound::MixingEngine engine(sound::Reading::Offline);
    Runtime runtime({std::make_unique<StudioClock>(), station, &engine, std::nullopt}, host);
    player::LocalPlayer player(engine, player::MusicLibrary::OfApplication(station));
    mainWindow window;
    RegisterPlayerScripts(runtime.Scripts(), player, window);
    window.Event_Open();
    console.Line("Programs:");
    for (const String& row : window.programMenu.Rows()) console.Line("  " + row.Bytes());
    console.Line("Playlists:");
    for (const String& row : window.playlistMenu.Rows()) {
        console.Line("  " + row.Bytes() + " (" + player.CountSongs(row.Bytes()) + ")");
    }
}

}  // namespace sorakaze::studio
