// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The player for the user's own files: playlists, tags, and one track at a time on the mixing engine. The
// player scripts call it, with the runtime's baton. It knows nothing of the show.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "player/MusicLibrary.h"
#include "sound/MixingEngine.h"

namespace sorakaze::player {

/// An event of a track, for observers.
struct TrackEvent {
    enum class What {
        Started,
        FadeBegun,
        Ended,
        Failed,    ///< it can't be played; once, also if that is known long before its turn
        Skipped,   ///< the turn came of a track that can't be played
        Untagged,  ///< it can be played, but its tags can't be read
    };
    What what = What::Started;
    std::string playlist;
    int number = 0;  ///< 1-based
    std::string title;
    std::filesystem::path path;
    FilePart part{};                         ///< of the file, where the track isn't all of it
    double position = 0;                     ///< seconds played
    std::optional<sound::VoiceLevel> level;  ///< with Started, under a desk
    std::string why;                         ///< of a failure, for people
};

class LocalPlayer {
  public:
    LocalPlayer(sound::MixingEngine& engine, std::unique_ptr<MusicLibrary> library);
    ~LocalPlayer();

    /// Called on the caller's thread for each event. May be empty.
    std::function<void(const TrackEvent&)> onTrack;

    /// Called on any thread when TellChecked has something to tell; it must not call the player. May be
    /// empty. After this returns, the former `tell` isn't called any more.
    void OnChecked(std::function<void()> tell);
    /// Tells of the tracks that were found not to be playable since their records were asked for.
    void TellChecked();

    /// How long a track is played at most, in seconds, before it is faded: its level is that of this part.
    /// Empty: to its end.
    std::function<double()> songSeconds;

    /// A number that is another one for each show: the order of shuffled playlists is drawn by it, when it
    /// changes. Empty: always the same.
    std::function<std::uint64_t()> showSeed;

    /// Changes the texts that SongInfo tells, not those that people see. May be empty.
    std::function<TrackText(TrackText)> speakable;

    /// SongInfo opens its track in advance, one at a time, so that Play starts without delay. For a host that
    /// renders faster than it plays. Off at first.
    void SetReadAhead(bool on);

    /// The names of all playlists joined by ", ", `Library` first.
    std::string Playlists();
    /// The same names one by one.
    std::vector<std::string> PlaylistNames();
    bool HasPlaylist(const std::string& playlist);
    /// The number of tracks in decimal; "0" for an unknown playlist.
    std::string CountSongs(const std::string& playlist);
    /// The tracks of the playlist that have no file, as many as are found in `most`.
    MusicLibrary::Missing FindMissing(const std::string& playlist, std::chrono::milliseconds most);
    /// Six fields separated by tabs: title, artist, album and their sort spellings, as a presenter says them.
    /// Empty outside the playlist. Begins to look whether the track can be played.
    std::string SongInfo(const std::string& playlist, int number);
    /// The same texts as the file itself has them, for people to see.
    TrackText ShownText(const std::string& playlist, int number);

    /// "playing", "fading" or "stopped". A track that has run out, is gone or can't be played counts as
    /// stopped; one whose whole music folder is missing counts as playing until it is back, for a quarter of
    /// an hour at most.
    std::string State();
    /// Seconds played of the current track, in decimal with a point; "0" when stopped.
    std::string Position();

    /// Starts a track from its beginning in place of the current one and returns at once. Outside the
    /// playlist, or where the file can't be played, the player is stopped afterwards.
    void Play(const std::string& playlist, int number);
    void Stop();

    /// The fade-out in three steps, for a caller that has to wait cooperatively: BeginFade starts it (about 4
    /// seconds, sample by sample), IsFading holds until silence or the track's end, EndFade ends the track
    /// and restores the level.
    void BeginFade();
    bool IsFading() const;
    void EndFade();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::player
