// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The interpreter of command lines.
#include "app/runtime/Random.h"
#include "app/runtime/Runtime.h"
#include "app/runtime/Shell.h"
#include "app/runtime/Sound.h"
#include "player/bridge/PlayFile.h"
#include "show/mainWindow.h"
#include "speech/SayLine.h"
#include "speech/VoicePage.h"

namespace sorakaze {
namespace {

/// A block's own copy of the track: the preparation of the next one, which the block itself starts,
/// overwrites the window's. Kept behaviour 34.
struct TrackCopy {
    String wikiContents;
    TextSource wikiSource;
    String song;
    String artist;
    String album;
};

const char* NameOf(const mainWindow& window) {
    if (window.command == window.opening) return "opening";
    if (window.command == window.IntroW) return "introW";
    if (window.command == window.intro) return "intro";
    if (window.command == window.jingle) return "jingle";
    return window.command == window.ending ? "ending" : "";
}

/// Kept behaviours 31, 32 and 33.
String Expand(String line, mainWindow& window, const TrackCopy& track) {
    line = ReplaceAll(line, "[[program]]", window.program);
    line = ReplaceAll(line, "[[station]]", window.station);
    line = ReplaceAll(line, "[[band]]", window.band);
    line = ReplaceAll(line, "[[song]]", track.song);
    line = ReplaceAll(line, "[[name]]", track.artist);
    line = ReplaceAll(line, "[[album]]", track.album);
    line = ReplaceAll(line, "[[artistinfo]]", track.wikiContents);
    line = ReplaceAll(line, "[[personality]]", window.personality);
    line = ReplaceAll(line, "[[trackno]]", Str(window.trackNo - 1));
    const double count = Val(window.getSongCount(window.playlistMenu.Text()));
    line = ReplaceAll(line, "[[trackleft]]", Str(count - window.trackNo + 1));
    return ReplaceAll(line, Chr(34), "");
}

/// Tells whom the encyclopaedia's text is by, where the argument of a spoken line holds it.
void TellSource(mainWindow& window, const TrackCopy& track, const String& spoken) {
    const TextSource& source = track.wikiSource;
    const String text = Trim(track.wikiContents);
    if (source.address.IsEmpty() || text.IsEmpty() || InStr(spoken, text) == 0) return;
    window.tell(ShowEvent::Kind::Credit, {{"what", "text"},
                                          {"title", source.title},
                                          {"address", source.address},
                                          {"licence", source.licence}});
}

/// Starts the prepared track and then the preparation of the one after it.
void PlayTrack(mainWindow& window) {
    window.fadeOut(window.soundData, 1.0);
    window.iTunesPlay(window.playlistMenu.Text(), window.trackNo);
    // Kept behaviour 37.
    WaitWhile([&window] { return window.getNextSong.State() == Thread::kRunning; });
    window.getNextSong.Run();
}

/// Kept behaviour 36.
void Wait(const String& seconds) {
    const std::int32_t start = Ticks();
    const double limit = Val(seconds) * 60.0;
    WaitWhile([start, limit] { return static_cast<double>(Ticks() - start) < limit; });
}

/// Whether this line or, after pauses of less than 1.5 seconds, a later one speaks.
bool IsSpeechNear(const mainWindow& window, std::int32_t index) {
    constexpr double kLongestPause = 1.5;
    for (double pause = 0; index <= Block::kLastLine && pause < kLongestPause; ++index) {
        const String line = (*NotNil(window.command))(index, window.section);
        const String verb = NthField(line, " ", 1);
        if (verb == "say" || verb == "sayj") return true;
        if (!(verb == "wait")) return false;
        pause += Val(Mid(line, Len(verb) + 1));
    }
    return false;
}

}  // namespace

String mainWindow::voiceOfShow() const {
    return InStr(personality, " ") > 0 ? NthField(personality, " ", 1) : String("Alex");
}

void mainWindow::commandExecThread_Run() {
    Shell shell;
    Random random;
    const TrackCopy track{wikiContents, wikiSource, song, artist, album};
    const String voice = voiceOfShow();
    const auto tellShow = [this](ShowEvent::Kind kind, ShowEvent::Fields fields) {
        tell(kind, std::move(fields));
    };
    tell(ShowEvent::Kind::Block, {{"name", String(NameOf(*this))}, {"variant", section}});

    for (std::int32_t index = 0; index <= Block::kLastLine; ++index) {
        String line = (*NotNil(command))(index, section);
        if (line.IsEmpty()) break;
        CurrentPlace() = NotNil(command)->Origin(index, section);
        line = Expand(line, *this, track);
        tell(ShowEvent::Kind::Line, {{"text", line}});
        if (IsSpeechNear(*this, index)) ExpectSpeech();
        const String verb = NthField(line, " ", 1);
        const String argument = Trim(Mid(line, Len(verb) + 1));
        if (verb == "say" || verb == "sayj") TellSource(*this, track, argument);
        if (verb == "say") {
            SayLine(shell, voice, argument, sayData, tellShow);
        } else if (verb == "sayj") {
            tell(ShowEvent::Kind::Sayj, {{"voice", j_personality}, {"text", argument}});
            LoadVoicePage(voiceHTMLViewer, resourceFolder, VoicePage(deployment, j_personality, argument));
        } else if (verb == "play") {
            if (argument == "[[iTunes]]") {
                PlayTrack(*this);
            } else {
                PlayFile(appFolder, argument, random, soundData, tellShow);
            }
        } else if (verb == "wait") {
            Wait(argument);
        }  // kept behaviour 35: no other verb is told of
        Yield();
    }

    CurrentPlace() = {};
    fadeOut(soundData, 3.0);
    mainTimer.SetMode(timerMode);
}

}  // namespace sorakaze
