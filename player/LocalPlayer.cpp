// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/LocalPlayer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <deque>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "player/AnnouncedText.h"
#include "player/FileStamp.h"
#include "player/FolderTree.h"
#include "player/MusicLibrary.h"
#include "player/NameText.h"
#include "player/ShuffledOrder.h"
#include "player/Tags.h"
#include "player/TrackCheck.h"

namespace sorakaze::player {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kFadeSeconds = 4;
/// How long to wait for a missing music folder, and how often to check for it.
constexpr std::chrono::minutes kGracePeriod{15};
constexpr std::chrono::seconds kLookInterval{1};

std::string Decimal(double seconds) {
    std::array<char, 64> text{};
    constexpr int kDecimals = 3;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed, kDecimals);
    return error == std::errc{} ? std::string(text.data(), end) : "0";
}

/// Of a Track or a TrackEvent.
template <typename Track>
sound::SoundSource SourceOf(const Track& track) {
    constexpr std::int64_t kFrames = sound::kSampleRate / 75;
    const auto [begin, end] = track.part;
    return {track.path, {{begin * kFrames}, {end > 0 ? (end - begin) * kFrames : 0}}};
}

/// The names of a folder's files, of a folder of thousands the first ones.
std::vector<std::string> NamesIn(const std::filesystem::path& folder) {
    constexpr std::size_t kMost = 2000;
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (names.size() == kMost) break;
        std::string name = entry->path().filename().string();
        if (IsSoundName(name)) names.push_back(std::move(name));
    }
    return names;
}

}  // namespace

struct LocalPlayer::Impl {
    struct Playing {
        std::shared_ptr<sound::Voice> voice;
        TrackEvent track;                        ///< what Started told
        std::optional<sound::Frames> fadeBegun;  ///< in frames mixed by the engine
        bool isEndKnown = false;                 ///< it was measured as a whole
        Clock::time_point nextLook{};            ///< for its measurement
    };
    /// A track whose music folder is missing. It counts as playing until the folder is back or has been
    /// missing for long.
    struct Waiting {
        TrackEvent track;
        Clock::time_point since;
        Clock::time_point nextLook;
    };
    /// A file's texts or decoder, valid while the stamp is the file's.
    template <typename Value>
    struct Cached {
        sound::SoundSource source;
        std::optional<FileStamp> stamp;
        bool settled = false;
        Value value{};
        std::string why{};  ///< where there is none

        Cached(sound::SoundSource file, const std::optional<FileStamp>& fileStamp)
            : source(std::move(file)), stamp(fileStamp), settled(stamp && IsSettled(*stamp)) {}

        bool IsFor(const sound::SoundSource& other, const std::optional<FileStamp>& otherStamp) const {
            return settled && source == other && stamp == otherStamp;
        }
    };

    LocalPlayer& player;
    sound::MixingEngine& engine;
    std::unique_ptr<MusicLibrary> library;
    bool readsAhead = false;
    std::optional<Playing> playing;
    std::optional<Waiting> waiting;  ///< never beside playing
    /// A shuffled playlist in the order of the present show.
    struct Shuffled {
        std::string playlist;
        std::uint64_t seed;
        ShuffledOrder order;
    };
    std::optional<Shuffled> shuffled;
    std::optional<Cached<TrackTags>> lastTags;
    std::optional<Cached<std::shared_ptr<sound::Voice>>> prepared;
    std::set<std::pair<std::string, int>> told;  ///< tracks whose failure was told in this show
    std::deque<TrackEvent> inCheck;              ///< the newest first
    TrackCheck check{engine};

    Impl(LocalPlayer& owner, sound::MixingEngine& mixer, std::unique_ptr<MusicLibrary> music)
        : player(owner), engine(mixer), library(std::move(music)) {
        library->UseFacts([this](const std::filesystem::path& file) { return FactsOf(file); });
    }

    FileFacts FactsOf(const std::filesystem::path& file) {
        std::string why;  // of no interest: it isn't a track yet
        const auto voice = engine.Open(file, sound::Bus::Music, {}, &why);
        const auto length = voice ? voice->Length() : std::nullopt;
        return {ReadTags(engine, file, &why).text, length ? std::optional(length->Seconds()) : std::nullopt};
    }

    const TrackTags& TagsOf(const std::string& path) {
        const auto stamp = StampOf(path);
        if (!lastTags || !lastTags->IsFor(path, stamp)) {
            lastTags.emplace(path, stamp);
            lastTags->value = ReadTags(engine, path, &lastTags->why);
        }
        return lastTags->value;
    }

    TrackText TextOf(const Track& track) {
        TrackText text = TagsOf(track.path.string()).text;
        if (track.part.IsWholeFile()) {
            text.FillFrom(track.text);
        } else {
            // The file's own title is that of all its tracks.
            text.title.clear();
            text.titleSort.clear();
            TrackText ofSheet = track.text;
            ofSheet.FillFrom(text);
            text = std::move(ofSheet);
        }
        if (text.title.empty())
            text.FillFrom(TextFromPath(track.path, library->RootOf(track.path),
                                       [&] { return NamesIn(track.path.parent_path()); }));
        return text;
    }

    /// The present show's order of `playlist`; null for one that isn't shuffled.
    ShuffledOrder* OrderOf(const std::string& playlist) {
        const std::uint64_t seed = player.showSeed ? player.showSeed() : 0;
        if (shuffled && shuffled->playlist == playlist && shuffled->seed == seed &&
            shuffled->order.Count() > 0)
            return &shuffled->order;
        TrackList tracks = library->Open(playlist);
        if (tracks.GetOrder() != TrackList::Order::Shuffled) return nullptr;
        ShuffledOrder order(std::move(tracks), seed,
                            [this](const Track& track) { return TextOf(track).artist; });
        shuffled.emplace(Shuffled{playlist, seed, std::move(order)});
        return &shuffled->order;
    }

    std::optional<Track> Find(const std::string& playlist, int number) {
        if (ShuffledOrder* const order = OrderOf(playlist)) {
            const auto place = static_cast<std::size_t>(number) - 1;
            return number > 0 && place < order->Count() ? std::optional(order->At(place)) : std::nullopt;
        }
        return library->Find(playlist, number);
    }

    std::size_t Count(const std::string& playlist) {
        if (const ShuffledOrder* const order = OrderOf(playlist)) return order->Count();
        return static_cast<std::size_t>(library->Count(playlist));
    }

    /// What will be heard of a track. A tick of the show's timer may pass before the fade.
    sound::Frames PlayedPart() const {
        constexpr double kMost = 60 * 60, kMargin = 0.5;
        const double seconds = player.songSeconds ? player.songSeconds() : kMost;
        return sound::FramesFromSeconds(seconds + kFadeSeconds + kMargin);
    }

    void SetLevel(sound::Voice& voice, const sound::SoundSource& source) {
        if (!engine.HasDesk()) return;
        voice.SetLevel(
            engine.LevelOfMusic(source, PlayedPart(), TagsOf(source.file.string()).loudness, &voice));
    }

    /// The level of a track stays as it began, but where it ends may become known later, also because the
    /// slider was moved.
    void FindEnd() {
        if (readsAhead || !playing || playing->isEndKnown || !engine.HasDesk()) return;
        const auto now = Clock::now();
        if (now < playing->nextLook) return;
        playing->nextLook = now + kLookInterval;
        engine.WantLevel(SourceOf(playing->track), PlayedPart());
        const auto level = engine.LevelOfMusic(SourceOf(playing->track), PlayedPart(), std::nullopt);
        playing->isEndKnown = level.isWhole;
        if (level.plan.end) playing->voice->EndAt(*level.plan.end, level.plan.endFade);
    }

    void Prepare(const sound::SoundSource& source) {
        const auto stamp = StampOf(source.file.string());
        if (prepared && prepared->IsFor(source, stamp)) return;
        prepared.emplace(source, stamp);
        prepared->value = engine.Open(source, sound::Bus::Music, PlayedPart(), &prepared->why);
    }

    std::shared_ptr<sound::Voice> TakeVoice(const sound::SoundSource& source, std::string& why) {
        if (prepared && prepared->IsFor(source, StampOf(source.file.string()))) {
            auto voice = std::move(prepared->value);
            why = std::move(prepared->why);
            prepared.reset();
            return voice;
        }
        return engine.Open(source, sound::Bus::Music, PlayedPart(), &why);
    }

    /// Before its turn. On the air the answer comes by TellChecked.
    void Check(TrackEvent event) {
        if (readsAhead) {
            Prepare(SourceOf(event));
            if (!prepared->value) TellFailed(std::move(event), prepared->why);
            return;
        }
        constexpr std::size_t kMost = 8;
        const bool isOnAir =
            playing && playing->track.number == event.number && playing->track.playlist == event.playlist;
        if (isOnAir) return;
        check.Want(event.path);
        inCheck.push_front(std::move(event));
        if (inCheck.size() > kMost) inCheck.pop_back();
    }

    /// The search for a playlist's entry knows better than the opening of the file that it guessed.
    void TellFailed(TrackEvent event, const std::string& why) {
        if (!told.emplace(event.playlist, event.number).second) return;
        if (event.why.empty()) event.why = why;
        Tell(std::move(event), TrackEvent::What::Failed, 0);
    }

    void Skip(TrackEvent event, const std::string& why) {
        TellFailed(event, why);
        if (event.why.empty()) event.why = why;
        Tell(std::move(event), TrackEvent::What::Skipped, 0);
    }

    void Tell(TrackEvent event, TrackEvent::What what, double position) const {
        event.what = what;
        event.position = position;
        if (player.onTrack) player.onTrack(event);
    }

    void Begin(std::shared_ptr<sound::Voice> voice, TrackEvent event) {
        SetLevel(*voice, SourceOf(event));
        voice->Start();
        event.level = voice->Level();
        playing = Playing{std::move(voice), event, std::nullopt, event.level && event.level->isWhole, {}};
        Tell(event, TrackEvent::What::Started, 0);
        if (!lastTags || lastTags->source.file != event.path || lastTags->why.empty()) return;
        event.why = lastTags->why;
        Tell(std::move(event), TrackEvent::What::Untagged, 0);
    }

    /// On the wall clock only: a rendered show would run on meanwhile.
    bool MayComeBack(const TrackEvent& track) const {
        return !readsAhead && library->IsFolderMissing(track.path);
    }
    void WaitFor(const TrackEvent& track) {
        const auto now = Clock::now();
        waiting = Waiting{track, now, now + kLookInterval};
    }

    void LookForMissingFolder() {
        if (!waiting) return;
        const auto now = Clock::now();
        if (now < waiting->nextLook) return;
        waiting->nextLook = now + kLookInterval;
        TrackEvent track = waiting->track;
        if (library->IsFolderMissing(track.path)) {
            if (now - waiting->since <= kGracePeriod) return;
            waiting.reset();
            return Skip(std::move(track), "its music folder is missing");
        }
        waiting.reset();
        std::string why;
        auto voice = TakeVoice(SourceOf(track), why);
        if (!voice) return Skip(std::move(track), why);
        track.why.clear();
        const auto known = Find(track.playlist, track.number);
        if (player.onTrack && known) track.title = TextOf(*known).title;
        Begin(std::move(voice), std::move(track));
    }

    /// Ends the current track, if there is one. The player is stopped before the event.
    void End() {
        waiting.reset();
        if (!playing) return;
        const Playing ended = std::move(*playing);
        playing.reset();
        ended.voice->Stop();
        Tell(ended.track, TrackEvent::What::Ended, ended.voice->Position().Seconds());
    }

    /// Also ends a track that has played to its end.
    bool IsPlaying() {
        if (playing && !playing->voice->IsPlaying()) End();
        return playing.has_value();
    }
};

LocalPlayer::LocalPlayer(sound::MixingEngine& engine, std::unique_ptr<MusicLibrary> library)
    : impl_(new Impl(*this, engine, std::move(library))) {}

LocalPlayer::~LocalPlayer() {
    if (impl_->playing) impl_->playing->voice->Stop();
}

void LocalPlayer::SetReadAhead(bool on) {
    impl_->readsAhead = on;
    if (!on) impl_->prepared.reset();
}

void LocalPlayer::OnChecked(std::function<void()> tell) {
    impl_->check.OnFound(std::move(tell));
}

void LocalPlayer::TellChecked() {
    for (const auto& [file, why] : impl_->check.Take()) {
        const auto isFile = [&file = file](const TrackEvent& event) { return event.path == file; };
        const auto found = std::find_if(impl_->inCheck.begin(), impl_->inCheck.end(), isFile);
        if (found == impl_->inCheck.end()) continue;
        TrackEvent event = std::move(*found);
        impl_->inCheck.erase(found);
        if (!impl_->MayComeBack(event)) impl_->TellFailed(std::move(event), why);
    }
}

std::string LocalPlayer::Playlists() {
    std::string joined;
    for (const std::string& name : PlaylistNames()) joined += (joined.empty() ? "" : ", ") + name;
    return joined;
}

std::vector<std::string> LocalPlayer::PlaylistNames() {
    return impl_->library->Names();
}

bool LocalPlayer::HasPlaylist(const std::string& playlist) {
    return impl_->library->Has(playlist);
}

std::string LocalPlayer::CountSongs(const std::string& playlist) {
    return std::to_string(impl_->Count(playlist));
}

MusicLibrary::Missing LocalPlayer::FindMissing(const std::string& playlist, std::chrono::milliseconds most) {
    return impl_->library->FindMissing(playlist, most);
}

std::string LocalPlayer::SongInfo(const std::string& playlist, int number) {
    const auto track = impl_->Find(playlist, number);
    if (!track) return {};
    impl_->engine.WantLevel(SourceOf(*track), impl_->PlayedPart());
    impl_->Check(
        {TrackEvent::What::Failed, playlist, number, {}, track->path, track->part, 0, {}, track->missing});
    TrackText text = AnnouncedText(impl_->TextOf(*track));
    if (speakable) text = speakable(std::move(text));
    return text.Record();
}

TrackText LocalPlayer::ShownText(const std::string& playlist, int number) {
    const auto track = impl_->Find(playlist, number);
    return track ? impl_->TextOf(*track) : TrackText();
}

std::string LocalPlayer::State() {
    impl_->LookForMissingFolder();
    if (impl_->waiting) return "playing";
    if (!impl_->IsPlaying()) return "stopped";
    impl_->FindEnd();
    return impl_->playing->fadeBegun ? "fading" : "playing";
}

std::string LocalPlayer::Position() {
    return impl_->IsPlaying() ? Decimal(impl_->playing->voice->Position().Seconds()) : "0";
}

void LocalPlayer::Play(const std::string& playlist, int number) {
    impl_->End();
    const auto track = impl_->Find(playlist, number);
    if (!track) return;
    std::string why;
    auto voice = impl_->TakeVoice(SourceOf(*track), why);
    TrackEvent event{
        TrackEvent::What::Started, playlist, number, {}, track->path, track->part, 0, {}, track->missing};
    if (!voice) return impl_->MayComeBack(event) ? impl_->WaitFor(event) : impl_->Skip(event, why);
    if (onTrack) event.title = impl_->TextOf(*track).title;
    impl_->Begin(std::move(voice), std::move(event));
}

void LocalPlayer::Stop() {
    impl_->prepared.reset();
    impl_->End();
    impl_->told.clear();
    impl_->inCheck.clear();
}

void LocalPlayer::BeginFade() {
    if (!impl_->IsPlaying() || impl_->playing->fadeBegun) return;
    Impl::Playing& playing = *impl_->playing;
    playing.fadeBegun = impl_->engine.Mixed();
    playing.voice->FadeOut(sound::FramesFromSeconds(kFadeSeconds));
    const TrackEvent track = playing.track;
    impl_->Tell(track, TrackEvent::What::FadeBegun, playing.voice->Position().Seconds());
}

bool LocalPlayer::IsFading() const {
    if (!impl_->playing || !impl_->playing->fadeBegun || !impl_->playing->voice->IsPlaying()) return false;
    return impl_->engine.Mixed() - *impl_->playing->fadeBegun < sound::FramesFromSeconds(kFadeSeconds);
}

void LocalPlayer::EndFade() {
    // The level belongs to the track's voice: the next one starts with its own, which is full.
    if (impl_->playing && impl_->playing->fadeBegun) impl_->End();
}

}  // namespace sorakaze::player
