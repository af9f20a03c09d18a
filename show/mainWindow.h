// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The one window, and with it the whole show: every piece of show state is a public property of it. The
// button and the timer run on the main thread, a block of command lines on commandExecThread, the preparation
// of the next track on getNextSong; all three share the properties with no lock, since the threads are
// cooperative. Each method's body is in the folder of its subsystem.
#pragma once

#include <cstdint>
#include <vector>

#include "app/runtime/Controls.h"
#include "app/runtime/FolderItem.h"
#include "app/runtime/Sound.h"
#include "app/runtime/String.h"
#include "app/runtime/Thread.h"
#include "show/Block.h"
#include "show/Deployment.h"
#include "show/ShowObserver.h"
#include "show/TextSource.h"

namespace sorakaze {

struct Message;
class OLEObject;
class Random;

class mainWindow : public Window {
  public:
    /// Runs __Init, Layout and CreateControls. Event_Open is the host's to call, once the player's scripts
    /// are registered.
    mainWindow();
    /// Kills the threads and runs __Exit.
    ~mainWindow();
    mainWindow(const mainWindow&) = delete;
    mainWindow& operator=(const mainWindow&) = delete;

    /// Applies the window's properties.
    void Layout();
    void CreateControls();
    void _CreateControls0();  // NOLINT(bugprone-reserved-identifier)

    /// Starts a show or stops it, as the button's caption says. Main thread.
    void programStart_Action();
    /// Carries out the variant `section` of the block `command`. Thread commandExecThread.
    void commandExecThread_Run();
    /// Watches the player between two blocks and decides what comes next. Main thread.
    void mainTimer_Action();
    void songDurationSlider_ValueChanged();
    /// Prepares the next track. Thread getNextSong.
    void getNextSong_Run();
    /// Finds the folders and fills the menus. Main thread. Raises NilObjectException.
    void Event_Open();

    /// Loads Programs/<name>.txt into the properties. Raises OutOfBoundsException for a variant beyond 0 to
    /// 10 and NilObjectException for a file that can't be read.
    void readProgram(const String& name);
    /// Looks an artist up; leaves the text in wikiContents, empty if there is none.
    void getContents(String name);
    /// Brings a playing sound down to silence step by step over about `seconds`, then stops it. Waits.
    void fadeOut(const SoundRef& sound, double seconds);
    void logger(const String& message);
    /// The romaji of one run of multibyte characters, by way of the reading that kanji2kanaCmd prints.
    String kanji2roma(const String& run);
    /// The text with its multibyte runs turned into romaji.
    String convertRoma(const String& text);
    void doEnding();

    // The operations on the player. The result of the script is returned as it is.
    void iTunesStop();
    String getSongCount(const String& playlist);
    void iTunesPlay(const String& playlist, std::int32_t track);
    String iTunesState();
    String iTunesPlayPosition();
    void iTunesFadeout();
    String iTunesPlaylist();
    String iTunesSongInfo(const String& playlist, std::int32_t track);

    /// Tells the observer what the desk has decided since the last call.
    void tellDucks();
    /// Tells of the sounds and tracks whose files could not be decoded to their end since the last call.
    /// Called by the host, when the engine reports failures or from time to time.
    void tellFailures();

    /// Tells the observer, if there is one. With the baton. A Credit or Voice is told once a show, however
    /// often it is due.
    void tell(ShowEvent::Kind kind, ShowEvent::Fields fields = {});

    // The controls.
    TextArea resultField;
    PopupMenu playlistMenu;
    PopupMenu programMenu;
    PushButton programStart;
    StaticText StaticText1;
    StaticText StaticText2;
    OnWindow<Thread> commandExecThread;
    OnWindow<Timer> mainTimer;
    Slider songDurationSlider;
    StaticText StaticText3;
    StaticText songDuration;
    HTMLViewer voiceHTMLViewer;
    OnWindow<Thread> getNextSong;

    // The show's state.
    String program;
    String station;
    String band;
    BlockRef opening;
    BlockRef intro;
    BlockRef ending;
    BlockRef jingle;
    BlockRef command;          ///< the block to run: one of the others, never a copy
    String wikiContents;       ///< on the artist of the next track; empty when there is nothing
    TextSource wikiSource;     ///< of wikiContents
    std::int32_t trackNo = 0;  ///< 1-based position of the track prepared last: one ahead of the player
    String song;               ///< title, artist and album of the next track in the form to be spoken
    String artist;
    String album;
    std::int32_t openingCount = 0;  ///< variant number of the block's last line: the upper bound of its draw
    std::int32_t endingCount = 0;
    std::int32_t introCount = 0;
    std::int32_t jingleCount = 0;
    std::vector<String> wikiHistory;  ///< artists looked up in this show
    std::int32_t section = 0;         ///< variant of `command` to run
    std::vector<String> kanaArray;    ///< the romanisation table, 167 rows
    std::vector<String> romeArray;
    BlockRef IntroW;
    std::int32_t introWCount = 0;
    String personality;
    std::int32_t startTicks = 0;
    String mode;
    bool isJapaneseOn = false;
    String j_personality;
    std::shared_ptr<OLEObject> iTunesApp;  ///< kept behaviour 29
    FolderItemRef appFolder;
    std::int32_t timerMode = 0;  ///< the Mode that mainTimer gets when a block ends: 0 or 2
    FolderItemRef kanji2kanaCmd;
    FolderItemRef resourceFolder;
    SoundRef soundData;
    SoundRef sayData;

    /// Where the services are; the host sets it before Event_Open.
    Deployment deployment;

    /// May be null. Outlives the window.
    ShowObserver* observer = nullptr;

  private:
    void __Init();  // NOLINT(bugprone-reserved-identifier)
    void __Exit();  // NOLINT(bugprone-reserved-identifier)

    void beginShow(Random& random);
    void endShow();
    /// Adds the line of the program, and notes what the message that follows is to say.
    void completeFailure(ShowEvent::Fields& fields);
    /// Tells of a message that is about to be shown, and adds what is known to its details.
    void tellMessage(Message& message);

    /// Whether the event has been told in this show. If not, it counts as told from now on.
    bool wasTold(const ShowEvent::Fields& fields);

    /// The voice that the show's `say` lines have. Kept behaviour 30.
    String voiceOfShow() const;

    /// Tells of a lookup without an answer, once a show and reason; an empty `why` is no failure.
    void tellLookupFailure(const String& why);

    std::vector<String> lookupFailures;       ///< told in this show
    std::vector<ShowEvent::Fields> toldOnce;  ///< credits and voices of this show
    String boxTold;  ///< the text of the message that follows the failure that was told last
    String boxDetails;
    String preparedRecord;  ///< of the track being prepared, cleaned
};

/// The caption while no show is on the air. Kept behaviour 15.
inline constexpr const char* kStartCaption = "再生";
inline constexpr const char* kStopCaption = "停止";

}  // namespace sorakaze
